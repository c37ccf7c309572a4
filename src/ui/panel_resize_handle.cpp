#include "ui/panel_resize_handle.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace tavrel::ui {
namespace {

constexpr int kPitch = 12;
constexpr int kDots = 3; ///< odd
constexpr double kDotRadius = 1.5;
constexpr double kLitOpacity = 0.9;
constexpr double kOpacity = 0.55;
constexpr int kKeyStep = 8;

QAccessibleInterface *accessOf(const QString &, QObject *object)
{
    auto *handle = qobject_cast<PanelResizeHandle *>(object);
    return handle ? new QAccessibleWidget(handle, QAccessible::Grip) : nullptr;
}

} // namespace

PanelResizeHandle::PanelResizeHandle(QWidget *panel, Side side, const Theme &theme, QWidget *parent)
    : QWidget(parent),
      m_panel(panel),
      m_side(side),
      m_theme(theme)
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessOf);
        return true;
    }();
    setObjectName(QStringLiteral("panelResizeHandle"));
    setAccessibleName(tr("调整侧边栏宽度"));
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::SplitHCursor);
    setFixedWidth(kWidth);
    connect(panel, &QObject::destroyed, this, &QObject::deleteLater);
}

void PanelResizeHandle::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void PanelResizeHandle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (hasFocus()) {
        painter.setPen(QPen(m_theme.accent(), 1.5));
        const QRectF ring(0.75, height() / 2.0 - 2 * kPitch, width() - 1.5, 4 * kPitch);
        painter.drawRoundedRect(ring, 3, 3);
    }
    painter.setOpacity(m_drag || underMouse() ? kLitOpacity : kOpacity);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.studioSecondaryText());
    for (int i = -kDots / 2; i <= kDots / 2; ++i)
        painter.drawEllipse(QPointF(width() / 2.0, height() / 2.0 + i * kPitch), kDotRadius, kDotRadius);
}

void PanelResizeHandle::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_drag = Drag{event->globalPosition().x(), m_panel->width()};
    update();
}

void PanelResizeHandle::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag)
        return;
    const int moved = static_cast<int>(std::lround(event->globalPosition().x() - m_drag->pressed));
    Q_EMIT widthAsked(m_drag->width + (m_side == Side::Right ? moved : -moved));
}

void PanelResizeHandle::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_drag)
        return;
    m_drag.reset();
    update();
    Q_EMIT widthChosen(m_panel->width());
}

void PanelResizeHandle::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Left && event->key() != Qt::Key_Right) {
        QWidget::keyPressEvent(event);
        return;
    }
    const bool wider = (event->key() == Qt::Key_Right) == (m_side == Side::Right);
    Q_EMIT widthAsked(m_panel->width() + (wider ? kKeyStep : -kKeyStep));
    Q_EMIT widthChosen(m_panel->width());
}

} // namespace tavrel::ui
