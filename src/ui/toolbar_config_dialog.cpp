#include "ui/toolbar_config_dialog.h"

#include "ui/paint_helpers.h"
#include "ui/toolbar_layout_editor.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QWheelEvent>

#include <algorithm>
#include <array>

namespace tavrel::ui {
namespace {

constexpr double kRadius = 14;
constexpr int kMargin = 20;       ///< from the card's edges to what is on it
constexpr int kEditorWidth = 414; ///< nine cells in a row
constexpr int kButtonGap = 8;
constexpr int kAboveButtons = 16;
constexpr int kShadow = 13; ///< reaches this far around the card
constexpr int kShadowOffset = 8;
constexpr int kEdge = 8; ///< the card stays this far inside, where the overlay has the room

QString buttonStyle(const QColor &text, const QColor &fill, const QColor &hover, const QColor &ring)
{
    return QStringLiteral("QPushButton { color: %1; background: %2; border: 2px solid transparent; border-radius: 8px; "
                          "padding: 4px 14px; font-size: 13px; min-width: 52px; outline: none; }"
                          "QPushButton:hover { background: %3; }"
                          "QPushButton:focus { border: 2px solid %4; }")
        .arg(css(text), css(fill), css(hover), css(ring));
}

/// Plain widgets have no role of their own.
QAccessibleInterface *accessibleOf(const QString &className, QObject *object)
{
    if (className == QLatin1String(ToolbarConfigDialog::staticMetaObject.className()))
        return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::Dialog);
    if (className == QLatin1String(ToolbarLayoutEditor::staticMetaObject.className()))
        return new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::List);
    return nullptr;
}

} // namespace

ToolbarConfigDialog::ToolbarConfigDialog(QWidget *overlay)
    : QWidget(overlay),
      m_editor(new ToolbarLayoutEditor(this)),
      m_cancel(new QPushButton(this)),
      m_done(new QPushButton(this))
{
    setObjectName(QStringLiteral("toolbarConfigDialog"));
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleOf);
        return true;
    }();
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::ArrowCursor);
    m_cancel->setObjectName(QStringLiteral("toolbarConfigCancel"));
    m_done->setObjectName(QStringLiteral("toolbarConfigDone"));
    connect(m_cancel, &QPushButton::clicked, this, &ToolbarConfigDialog::cancel);
    connect(m_done, &QPushButton::clicked, this, &ToolbarConfigDialog::closeRequested);
    connect(m_editor, &ToolbarLayoutEditor::configChanged, this, [this](const QString &json) {
        layOut();
        Q_EMIT configChanged(json);
    });
    overlay->installEventFilter(this);
    hide();
    setTheme(lightTheme());
    retranslate();
}

void ToolbarConfigDialog::open(const Theme &theme, const QString &config)
{
    m_initial = config;
    m_placed = false;
    m_press = Press::None;
    setTheme(theme);
    m_editor->setConfig(config);
    setGeometry(parentWidget()->rect());
    layOut();
    if (QWidget *focus = window()->focusWidget(); focus && !isAncestorOf(focus) && focus != this)
        m_focusBefore = focus;
    show();
    raise();
    setFocus(Qt::PopupFocusReason);
}

void ToolbarConfigDialog::setTheme(const Theme &theme)
{
    m_theme = theme;
    m_editor->setTheme(theme);
    m_cancel->setStyleSheet(buttonStyle(theme.primaryText(), theme.fieldFill(), theme.strongBorder(), theme.accent()));
    const QColor fill = theme.accent();
    m_done->setStyleSheet(
        buttonStyle(Qt::white, fill, fill.lighter(112), theme.dark ? fill.lighter(150) : fill.darker(150)));
    update();
}

void ToolbarConfigDialog::retranslate()
{
    m_cancel->setText(QCoreApplication::translate("ToolbarConfigDialog", "取消"));
    m_done->setText(QCoreApplication::translate("ToolbarConfigDialog", "完成"));
    setAccessibleName(ToolbarLayoutEditor::title());
}

void ToolbarConfigDialog::cancel()
{
    m_editor->setConfig(m_initial);
    Q_EMIT configChanged(m_initial);
    Q_EMIT closeRequested();
}

// --- geometry --------------------------------------------------------------------------------------------------------

void ToolbarConfigDialog::layOut()
{
    const int room = width() - 2 * (kMargin + kEdge);
    const int editorWidth = std::max(std::min(kEditorWidth, room), m_editor->minimumWidth());
    m_editor->fitTo(editorWidth);
    const int buttonHeight = std::max(m_cancel->sizeHint().height(), m_done->sizeHint().height());
    const QSize card(editorWidth + 2 * kMargin, m_editor->height() + buttonHeight + kAboveButtons + 2 * kMargin);
    // Once it is open its corner stays where it is: a row more must not move the cells below the pointer.
    const bool keepsCorner = isVisible() || m_placed;
    const QPoint middle((width() - card.width()) / 2, (height() - card.height()) / 2);
    update(m_card.adjusted(-kShadow, -kShadow, kShadow, kShadow + kShadowOffset)); // as large as it was
    m_card.setSize(card);
    moveCard(keepsCorner ? m_card.topLeft() : middle);
}

void ToolbarConfigDialog::moveCard(const QPoint &topLeft)
{
    const auto inside = [](int value, int size, int room) {
        return std::max(std::min(value, room - size - kEdge), std::min(kEdge, std::max(room - size, 0)));
    };
    const QRect before = m_card;
    m_card.moveTo(inside(topLeft.x(), m_card.width(), width()), inside(topLeft.y(), m_card.height(), height()));
    const QRect content = m_card.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    m_editor->move(content.topLeft());
    int right = content.left() + content.width();
    for (QPushButton *button : {m_done, m_cancel}) {
        const QSize size = button->sizeHint();
        button->setGeometry(
            QRect(QPoint(right - size.width(), content.top() + content.height() - size.height()), size));
        right -= size.width() + kButtonGap;
    }
    for (const QRect &card : {before, m_card})
        update(card.adjusted(-kShadow, -kShadow, kShadow, kShadow + kShadowOffset));
}

QRect ToolbarConfigDialog::header() const
{
    return {m_card.left(), m_card.top(), m_card.width(), kMargin + m_editor->headerRect().height()};
}

bool ToolbarConfigDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void ToolbarConfigDialog::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOut();
}

void ToolbarConfigDialog::hideEvent(QHideEvent *event)
{
    m_press = Press::None;
    QWidget *focus = window()->focusWidget();
    if (m_focusBefore && (!focus || focus == this || isAncestorOf(focus)))
        m_focusBefore->setFocus(Qt::PopupFocusReason);
    m_focusBefore = nullptr;
    QWidget::hideEvent(event);
}

// --- pointer and keys ------------------------------------------------------------------------------------------------

void ToolbarConfigDialog::mousePressEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint point = event->position().toPoint();
    m_press = !m_card.contains(point) ? Press::Outside : header().contains(point) ? Press::Header : Press::None;
    m_grip = point - m_card.topLeft();
}

void ToolbarConfigDialog::mouseMoveEvent(QMouseEvent *event)
{
    event->accept();
    if (m_press != Press::Header || !(event->buttons() & Qt::LeftButton))
        return;
    m_placed = true;
    moveCard(event->position().toPoint() - m_grip);
}

void ToolbarConfigDialog::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() != Qt::LeftButton)
        return;
    const Press press = std::exchange(m_press, Press::None);
    if (press == Press::Outside && !m_card.contains(event->position().toPoint()))
        Q_EMIT closeRequested();
}

void ToolbarConfigDialog::wheelEvent(QWheelEvent *event)
{
    event->accept();
}

void ToolbarConfigDialog::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    switch (event->key()) {
    case Qt::Key_Escape:
        Q_EMIT closeRequested();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // A button that has the keyboard is what the user sees as chosen.
        if (m_cancel->hasFocus())
            cancel();
        else
            Q_EMIT closeRequested();
        break;
    default:
        break;
    }
}

void ToolbarConfigDialog::keyReleaseEvent(QKeyEvent *event)
{
    event->accept();
}

bool ToolbarConfigDialog::focusNextPrevChild(bool next)
{
    if (!isVisible())
        return false;
    const std::array<QWidget *, 3> stops{m_editor, m_cancel, m_done};
    const auto at = std::find_if(stops.begin(), stops.end(), [](const QWidget *stop) { return stop->hasFocus(); });
    const auto before = at == stops.end() || at == stops.begin() ? stops.end() : at;
    const auto after = at == stops.end() || at + 1 == stops.end() ? stops.begin() : at + 1;
    (next ? *after : *(before - 1))->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

bool ToolbarConfigDialog::event(QEvent *event)
{
    // Accepted, a key is a key press and not a shortcut of the overlay.
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
        layOut();
    }
    return QWidget::event(event);
}

void ToolbarConfigDialog::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    softShadow(painter, m_card, kRadius, 2 * kShadow, kShadowOffset, m_theme.cardShadow());
    painter.setPen(QPen(m_theme.cardBorder(), 0.5));
    painter.setBrush(m_theme.cardSurface());
    painter.drawRoundedRect(QRectF(m_card).adjusted(0.25, 0.25, -0.25, -0.25), kRadius, kRadius);
}

} // namespace tavrel::ui
