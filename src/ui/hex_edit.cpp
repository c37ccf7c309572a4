#include "ui/hex_edit.h"

#include <QKeyEvent>
#include <QRegularExpressionValidator>

#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kDigits = 6;

class HexValidator final : public QRegularExpressionValidator
{
public:
    explicit HexValidator(QObject *parent)
        : QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9A-Fa-f]{0,6}")), parent)
    {}

    State validate(QString &input, int &position) const override
    {
        // Colours are copied from elsewhere with a "#" or a line end more often than without.
        QString digits = input;
        digits.remove(u'#');
        digits = digits.trimmed().toUpper();
        int within = std::min(position, static_cast<int>(digits.size()));
        const State state = QRegularExpressionValidator::validate(digits, within);
        if (state == Invalid)
            return state;
        input = digits;
        position = within;
        return state;
    }
};

} // namespace

HexEdit::HexEdit(QWidget *parent) : QLineEdit(parent)
{
    setObjectName(QStringLiteral("hexEdit"));
    setValidator(new HexValidator(this));
    setInputMethodHints(Qt::ImhLatinOnly | Qt::ImhPreferUppercase | Qt::ImhNoPredictiveText);
    setFrame(false);
    connect(this, &QLineEdit::textEdited, this, [this](const QString &text) {
        if (text.size() == kDigits)
            Q_EMIT completed(u'#' + text.toUpper());
    });
}

void HexEdit::setHex(const QString &hex)
{
    const QString digits = hex.mid(1);
    if (text() != digits)
        setText(digits);
}

void HexEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT escaped();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        Q_EMIT entered();
        return;
    }
    QLineEdit::keyPressEvent(event);
    event->accept();
}

void HexEdit::mouseReleaseEvent(QMouseEvent *event)
{
    QLineEdit::mouseReleaseEvent(event);
    // A full field takes no more digits: the first click selects what the next key replaces.
    if (std::exchange(m_selectAtRelease, false) && !hasSelectedText())
        selectAll();
}

void HexEdit::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    m_selectAtRelease = event->reason() == Qt::MouseFocusReason;
    if (m_typing)
        return;
    m_typing.emplace();
    Q_EMIT focusChanged(true);
}

void HexEdit::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason) // its own menu: what is typed and marked is what that is for
        leave();
}

void HexEdit::hideEvent(QHideEvent *event)
{
    QLineEdit::hideEvent(event);
    leave();
}

void HexEdit::leave()
{
    if (!m_typing)
        return;
    m_typing.reset();
    Q_EMIT focusChanged(false);
}

} // namespace tavrel::ui
