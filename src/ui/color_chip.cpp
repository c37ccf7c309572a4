#include "ui/color_chip.h"

#include "ui/color_paint.h"
#include "ui/glyphs.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>

namespace tavrel::ui {
namespace {

constexpr qreal kChosenInset = 5; ///< room for the ring and a gap between it and the swatch
constexpr qreal kFocusRadius = 6;
constexpr double kFadedOpacity = 0.28;
constexpr double kDisabledOpacity = 0.4;

void paintColor(QPainter &painter, const QRectF &circle, const QColor &color, bool dark)
{
    constexpr qreal kCell = 4;
    if (color.alpha() < 255)
        paintChessboard(painter, circle, kCell, dark);
    paintChip(painter, circle, color);
}

class AccessibleChip final : public QAccessibleWidget
{
public:
    explicit AccessibleChip(ColorChip *chip)
        : QAccessibleWidget(chip, chip->isAddChip() ? QAccessible::Button : QAccessible::RadioButton),
          m_chip(*chip)
    {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = !m_chip.isAddChip();
        state.checked = m_chip.isSelected();
        return state;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString &action) override
    {
        if (action == pressAction())
            m_chip.click();
        else
            QAccessibleWidget::doAction(action);
    }

private:
    ColorChip &m_chip;
};

QAccessibleInterface *accessibleChip(const QString &, QObject *object)
{
    auto *chip = qobject_cast<ColorChip *>(object);
    return chip ? new AccessibleChip(chip) : nullptr;
}

} // namespace

ColorChip::ColorChip(const QString &hex, int size, QWidget *parent)
    : QAbstractButton(parent),
      m_theme(lightTheme()),
      m_hex(hex)
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleChip);
        return true;
    }();
    setFixedSize(size, size);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(hex);
}

void ColorChip::setSelected(bool selected)
{
    if (selected == m_selected)
        return;
    m_selected = selected;
    update();
    if (!QAccessible::isActive())
        return;
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void ColorChip::setFaded(bool faded)
{
    m_faded = faded;
    update();
}

void ColorChip::applyTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ColorChip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_faded)
        painter.setOpacity(kFadedOpacity);
    const QRectF whole(rect());
    if (isAddChip()) {
        paintAdd(painter);
    } else if (m_selected) {
        paintColor(painter, whole.adjusted(kChosenInset, kChosenInset, -kChosenInset, -kChosenInset), QColor(m_hex),
                   m_theme.dark);
        paintSelectionRing(painter, whole);
    } else {
        const qreal inset = underMouse() && !isDown() ? 0.5 : 1.5;
        paintColor(painter, whole.adjusted(inset, inset, -inset, -inset), QColor(m_hex), m_theme.dark);
    }
    if (m_showsFocus)
        paintFocusRing(painter, whole, kFocusRadius, m_theme);
}

void ColorChip::paintAdd(QPainter &painter) const
{
    if (!isEnabled())
        painter.setOpacity(kDisabledOpacity);
    const QRectF circle = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    painter.setPen(QPen(m_theme.strongBorder(), 1));
    painter.setBrush(isDown()                      ? m_theme.toolPressedFill()
                     : isEnabled() && underMouse() ? m_theme.hoverFill()
                                                   : m_theme.transparent());
    painter.drawEllipse(circle);
    const qreal inset = width() * 0.22;
    paintGlyph(painter, QStringLiteral("ed_plus"), QRectF(rect()).adjusted(inset, inset, -inset, -inset),
               m_theme.primaryText());
}

void ColorChip::keyPressEvent(QKeyEvent *event)
{
    const bool plain = !(event->modifiers() & ~Qt::KeypadModifier);
    const int key = event->key();
    if (plain && (key == Qt::Key_Return || key == Qt::Key_Enter))
        click();
    else if (plain && (key == Qt::Key_Delete || key == Qt::Key_Backspace) && !isAddChip())
        Q_EMIT removeRequested();
    else
        QAbstractButton::keyPressEvent(event);
}

void ColorChip::focusInEvent(QFocusEvent *event)
{
    m_showsFocus = event->reason() != Qt::MouseFocusReason;
    QAbstractButton::focusInEvent(event);
    update();
}

void ColorChip::focusOutEvent(QFocusEvent *event)
{
    m_showsFocus = false;
    QAbstractButton::focusOutEvent(event);
    update();
}

} // namespace tavrel::ui
