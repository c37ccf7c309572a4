#include "overlay/long_capture_toolbar.h"

#include "ui/toolbar_button.h"

#include <QBitmap>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace tavrel::ui {
namespace {

constexpr int kDragDistance = 4;
constexpr double kRadius = 12;

} // namespace

LongCaptureToolbar::LongCaptureToolbar(QWidget *owner)
    : QFrame(owner, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint),
      m_theme(lightTheme())
{
    setObjectName(QStringLiteral("panel"));
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_QuitOnClose, false);
    setAttribute(Qt::WA_ShowWithoutActivating); // the overlay keeps the keyboard until this is clicked
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::ArrowCursor);
    setWindowTitle(tr("长截图"));
    setAccessibleName(tr("长截图"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(2);
    addButton(ToolType::Save, tr("保存"), Action::Save);
    addButton(ToolType::Pin, tr("贴图"), Action::Pin);
    addButton(ToolType::Copy, tr("复制"), Action::Copy);
    addButton(ToolType::Pen, tr("编辑"), Action::Edit);
    addButton(ToolType::Cancel, tr("取消"), Action::Leave);
}

void LongCaptureToolbar::addButton(ToolType glyph, const QString &text, Action action)
{
    auto *button = new ToolbarButton(glyph, this);
    button->setLabel(text);
    button->installEventFilter(this);
    connect(button, &ToolbarButton::clicked, this, [this, action] { Q_EMIT actionTriggered(action); });
    layout()->addWidget(button);
    m_buttons.insert(action, button);
}

void LongCaptureToolbar::setTheme(const Theme &theme)
{
    m_theme = theme;
    for (ToolbarButton *button : std::as_const(m_buttons))
        button->setTheme(theme);
    update();
}

void LongCaptureToolbar::setOffered(const QSet<Action> &offered)
{
    for (auto button = m_buttons.cbegin(); button != m_buttons.cend(); ++button)
        button.value()->setVisible(button.key() == Action::Leave || offered.contains(button.key()));
    adjustSize();
}

void LongCaptureToolbar::setShowLabels(bool show)
{
    for (ToolbarButton *button : std::as_const(m_buttons))
        button->setShowLabel(show);
    adjustSize();
}

void LongCaptureToolbar::setMixed(bool isMixed)
{
    m_isMixed = isMixed;
    cutCorners();
    update();
}

void LongCaptureToolbar::press(const QPoint &global)
{
    m_isPressed = true;
    m_isDragged = false;
    m_pressPoint = global;
    m_pressPosition = pos();
    Q_EMIT pressed();
}

bool LongCaptureToolbar::drag(const QPoint &global)
{
    if (!m_isPressed)
        return false;
    const QPoint way = global - m_pressPoint;
    if (!m_isDragged && way.manhattanLength() <= kDragDistance)
        return false;
    m_isDragged = true;
    const QPoint wanted = m_pressPosition + way;
    const int lastX = std::max(m_bounds.left(), m_bounds.left() + m_bounds.width() - width());
    const int lastY = std::max(m_bounds.top(), m_bounds.top() + m_bounds.height() - height());
    move(std::clamp(wanted.x(), m_bounds.left(), lastX), std::clamp(wanted.y(), m_bounds.top(), lastY));
    Q_EMIT moved();
    return true;
}

bool LongCaptureToolbar::eventFilter(QObject *watched, QEvent *event)
{
    auto *button = qobject_cast<ToolbarButton *>(watched);
    if (!button)
        return QFrame::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        press(static_cast<QMouseEvent *>(event)->globalPosition().toPoint());
        break;
    case QEvent::MouseMove:
        return drag(static_cast<QMouseEvent *>(event)->globalPosition().toPoint());
    case QEvent::MouseButtonRelease:
        m_isPressed = false;
        if (std::exchange(m_isDragged, false)) {
            button->setDown(false); // lets it go without a click
            return true;
        }
        break;
    default:
        break;
    }
    return QFrame::eventFilter(watched, event);
}

void LongCaptureToolbar::mousePressEvent(QMouseEvent *event)
{
    press(event->globalPosition().toPoint());
}

void LongCaptureToolbar::mouseMoveEvent(QMouseEvent *event)
{
    drag(event->globalPosition().toPoint());
}

void LongCaptureToolbar::mouseReleaseEvent(QMouseEvent *)
{
    m_isPressed = false;
    m_isDragged = false;
}

void LongCaptureToolbar::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Q_EMIT actionTriggered(Action::Edit);
    else if (event->key() == Qt::Key_Escape)
        Q_EMIT actionTriggered(Action::Leave);
    else
        QFrame::keyPressEvent(event);
}

void LongCaptureToolbar::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    cutCorners();
}

void LongCaptureToolbar::cutCorners()
{
    if (m_isMixed) {
        clearMask();
        return;
    }
    QBitmap shape(size()); // a polygon of the outline has few corners
    shape.clear();
    QPainter painter(&shape);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::color1);
    painter.drawRoundedRect(rect(), kRadius, kRadius);
    painter.end();
    setMask(QRegion(shape));
}

void LongCaptureToolbar::closeEvent(QCloseEvent *event)
{
    event->ignore(); // the overlay decides
    Q_EMIT actionTriggered(Action::Leave);
}

void LongCaptureToolbar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor surface = m_theme.panelSurface();
    surface.setAlpha(255); // the page moves below it
    // Where nothing mixes windows, whatever is not opaque comes out black.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect(), m_isMixed ? QColor(Qt::transparent) : surface);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(Qt::NoPen);
    painter.setBrush(surface);
    painter.drawRoundedRect(QRectF(rect()), kRadius, kRadius);
    painter.setPen(QPen(m_theme.panelBorder(), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius - 0.5, kRadius - 0.5);
}

} // namespace tavrel::ui
