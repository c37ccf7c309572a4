#include "overlay/tool_guide_bubble.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>

#include <algorithm>

namespace tavrel::ui {
namespace {

constexpr int kWidth = 260;
constexpr int kArrowHeight = 7;
constexpr int kArrowHalfWidth = 7;
constexpr double kRadius = 10;
constexpr int kTextLeft = 12;
constexpr int kTextWidth = 214;
constexpr int kTextPadding = 16; ///< above and below together
constexpr int kMinBodyHeight = 36;
constexpr int kCrossLeft = 232;
constexpr int kCrossSide = 20;
constexpr int kCrossExtra = 4; ///< around the cross, still hits it
constexpr int kTextFlags = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap;

} // namespace

GuideBubblePlacement placeGuideBubble(const QPoint &target, const QRect &toolbar, const QSize &overlay, int height,
                                      const QRect &bar)
{
    constexpr int kTargetInBubble = 158;
    constexpr int kEdge = 6;
    constexpr int kGap = 6;
    constexpr int kTopEdge = 4;
    constexpr int kArrowInset = 16; ///< keeps the arrow off the rounded corners
    const int x = std::clamp(target.x() - kTargetInBubble, kEdge, std::max(kEdge, overlay.width() - kWidth - kEdge));
    const int below = toolbar.top() + toolbar.height() + kGap;
    const int above = toolbar.top() - height - kGap;
    const bool fitsBelow = below + height <= overlay.height() - kEdge;
    const bool isInTheWay = above >= kTopEdge && bar.intersects(QRect(x, below, kWidth, height));
    const bool isBelow = fitsBelow && !isInTheWay;
    return {{x, std::max(isBelow ? below : above, kTopEdge)},
            std::clamp(target.x() - x, kArrowInset, kWidth - kArrowInset),
            isBelow};
}

ToolGuideBubble::ToolGuideBubble(QWidget *overlay) : QWidget(overlay), m_theme(lightTheme())
{
    setObjectName(QStringLiteral("toolGuideBubble"));
    setMouseTracking(true);
    setCursor(Qt::ArrowCursor);
    QFont medium = font();
    medium.setPixelSize(12);
    medium.setWeight(QFont::Medium);
    setFont(medium);
    hide();
}

void ToolGuideBubble::setTheme(const Theme &theme)
{
    m_theme = theme;
    update();
}

void ToolGuideBubble::setTools(const QStringList &texts)
{
    const QString joined = texts.join(QCoreApplication::translate("ToolGuideBubble", "、"));
    m_text = QCoreApplication::translate("ToolGuideBubble", "%1 收在这里，点箭头展开，还可自行配置").arg(joined);
    setAccessibleName(m_text);
    resize(kWidth, bodyHeight() + kArrowHeight);
    update();
}

void ToolGuideBubble::pointAt(const QPoint &target, const QRect &toolbar, const QRect &bar)
{
    const GuideBubblePlacement place = placeGuideBubble(target, toolbar, parentWidget()->size(), height(), bar);
    move(place.position);
    if (m_arrowX == place.arrowX && m_arrowUp == place.arrowUp)
        return;
    m_arrowX = place.arrowX;
    m_arrowUp = place.arrowUp;
    update();
}

int ToolGuideBubble::bodyHeight() const
{
    const QRect box(0, 0, kTextWidth, QWIDGETSIZE_MAX);
    const int textHeight = QFontMetrics(font()).boundingRect(box, kTextFlags & ~Qt::AlignVCenter, m_text).height();
    return std::max(textHeight + kTextPadding, kMinBodyHeight);
}

QRect ToolGuideBubble::body() const
{
    return {0, m_arrowUp ? kArrowHeight : 0, width(), height() - kArrowHeight};
}

QRect ToolGuideBubble::cross() const
{
    return {kCrossLeft, body().top() + (body().height() - kCrossSide) / 2, kCrossSide, kCrossSide};
}

bool ToolGuideBubble::isOverCross(const QPoint &point) const
{
    return cross().adjusted(-kCrossExtra, -kCrossExtra, kCrossExtra, kCrossExtra).contains(point);
}

QPainterPath ToolGuideBubble::outline() const
{
    const QRectF box = QRectF(body()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(box, kRadius, kRadius);
    const double base = m_arrowUp ? box.top() : box.bottom();
    const double tip = m_arrowUp ? 1 : height() - 1;
    QPainterPath arrow(QPointF(m_arrowX - kArrowHalfWidth, base));
    arrow.lineTo(m_arrowX, tip);
    arrow.lineTo(m_arrowX + kArrowHalfWidth, base);
    // Reaches into the body, so that no line is left between the two.
    const double inside = base + (m_arrowUp ? 2 : -2);
    arrow.lineTo(m_arrowX + kArrowHalfWidth, inside);
    arrow.lineTo(m_arrowX - kArrowHalfWidth, inside);
    arrow.closeSubpath();
    return path.united(arrow);
}

void ToolGuideBubble::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_theme.cardBorder());
    painter.setBrush(m_theme.cardSurface());
    painter.drawPath(outline());
    painter.setPen(m_theme.primaryText());
    painter.drawText(QRect(kTextLeft, body().top(), kTextWidth, body().height()), kTextFlags, m_text);

    const QRectF box(cross());
    if (m_crossHovered) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_theme.hoverFill());
        painter.drawRoundedRect(box, 5, 5);
    }
    painter.setPen(
        QPen(m_crossHovered ? m_theme.primaryText() : m_theme.secondaryText(), 1.4, Qt::SolidLine, Qt::RoundCap));
    const QPointF middle = box.center();
    painter.drawLine(middle - QPointF(4, 4), middle + QPointF(4, 4));
    painter.drawLine(middle - QPointF(4, -4), middle + QPointF(4, -4));
}

// The pointer on the bubble must not reach the selection below it.

void ToolGuideBubble::mousePressEvent(QMouseEvent *event)
{
    m_crossPressed = event->button() == Qt::LeftButton && isOverCross(event->position().toPoint());
    event->accept();
}

void ToolGuideBubble::mouseMoveEvent(QMouseEvent *event)
{
    const bool over = isOverCross(event->position().toPoint());
    if (over != m_crossHovered) {
        m_crossHovered = over;
        setCursor(over ? Qt::PointingHandCursor : Qt::ArrowCursor);
        update();
    }
    event->accept();
}

void ToolGuideBubble::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() == Qt::LeftButton && std::exchange(m_crossPressed, false) &&
        isOverCross(event->position().toPoint()))
        Q_EMIT dismissed();
}

void ToolGuideBubble::wheelEvent(QWheelEvent *event)
{
    event->accept();
}

void ToolGuideBubble::leaveEvent(QEvent *event)
{
    m_crossHovered = false;
    update();
    QWidget::leaveEvent(event);
}

} // namespace tavrel::ui
