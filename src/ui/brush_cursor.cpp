#include "ui/brush_cursor.h"

#include "base/color_text.h"

#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kSmallestDisc = 4;
constexpr double kLargestDisc = 256;
constexpr double kMarkerAlpha = 0.25;
constexpr double kAlpha = 0.4;

QPixmap brushPixmap(double diameter, QColor color, double alpha, double ratio)
{
    // Room for the ring, and an even number of device pixels, so that the hot spot lies in the middle.
    const int side = 2 * static_cast<int>(std::ceil((diameter / 2 + 2.5) * ratio));
    QPixmap pixmap(side, side);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre(side / ratio / 2, side / ratio / 2);
    color.setAlphaF(static_cast<float>(alpha));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(centre, diameter / 2, diameter / 2);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 130), 1));
    painter.drawEllipse(centre, diameter / 2 + 1.5, diameter / 2 + 1.5);
    painter.setPen(QPen(Qt::white, 1));
    painter.drawEllipse(centre, diameter / 2 + 0.5, diameter / 2 + 0.5);
    return pixmap;
}

} // namespace

bool BrushCursor::isFor(ToolType tool, const ShapeAttributes &attributes)
{
    switch (tool) {
    case ToolType::Rect:
    case ToolType::Circle:
    case ToolType::Line:
    case ToolType::Arrow:
    case ToolType::Pen:
    case ToolType::Magnifier:
        return true;
    case ToolType::Marker:
        return !attributes.markerRectMode;
    default:
        return false;
    }
}

const QCursor &BrushCursor::cursor(ToolType tool, const ShapeAttributes &attributes, double viewScale, double ratio)
{
    const double alpha = tool == ToolType::Marker ? kMarkerAlpha : kAlpha;
    const double diameter = std::clamp(attributes.thickness * viewScale, kSmallestDisc, kLargestDisc);
    const QString key = QStringLiteral("%1|%2|%3|%4").arg(diameter).arg(attributes.color).arg(alpha).arg(ratio);
    if (key != m_key) {
        m_key = key;
        m_cursor = QCursor(brushPixmap(diameter, colorFromText(attributes.color), alpha, ratio));
    }
    return m_cursor;
}

} // namespace tavrel::ui
