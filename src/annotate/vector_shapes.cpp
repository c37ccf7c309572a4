#include "annotate/vector_shapes.h"

#include "annotate/segment_distance.h"
#include "annotate/selection_marks.h"
#include "base/color_text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrel {
namespace {

constexpr double kRectReach = 10.0;
constexpr double kMarkerReach = 4.0;
constexpr double kSmallestEllipse = 1.0;
constexpr double kCornerReach = 14.0;
constexpr double kEllipseReach = 6.0;
constexpr double kLineReach = 10.0;

QColor fadedColor(const BaseShape &shape, double opacity)
{
    QColor color = colorFromText(shape.color);
    color.setAlpha(static_cast<int>(std::lround(std::clamp(color.alpha() * opacity, 0.0, 255.0))));
    return color;
}

} // namespace

QPen strokePen(const BaseShape &shape, double opacity)
{
    return {fadedColor(shape, opacity), shape.thickness, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

// --- rectangle -------------------------------------------------------------------------------------------------------

void RectShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    painter.save();
    painter.setPen(strokePen(*this, 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(box());
    painter.restore();
}

void RectShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintCornerBrackets(painter, box(), context.handleScale);
}

bool RectShape::hitTest(double x, double y) const
{
    const QRectF reach = box().adjusted(-kRectReach, -kRectReach, kRectReach, kRectReach);
    const auto isNear = [](double a, double b) { return std::abs(a - b) <= kRectReach; };
    const bool besideX = isNear(x, box().left()) || isNear(x, box().right());
    const bool besideY = isNear(y, box().top()) || isNear(y, box().bottom());
    return (besideY && x >= reach.left() && x <= reach.right()) || (besideX && y >= reach.top() && y <= reach.bottom());
}

QList<QRectF> RectShape::paintedParts() const
{
    const QRectF outer = paintedBounds();
    const double edge = outer.width() - box().width(); // of the stroke and its marks, on both sides together
    if (outer.width() < 4 * edge || outer.height() < 4 * edge)
        return {outer};
    return {QRectF(outer.left(), outer.top(), outer.width(), edge),
            QRectF(outer.left(), outer.bottom() - edge, outer.width(), edge),
            QRectF(outer.left(), outer.top() + edge, edge, outer.height() - 2 * edge),
            QRectF(outer.right() - edge, outer.top() + edge, edge, outer.height() - 2 * edge)};
}

// --- highlighter box -------------------------------------------------------------------------------------------------

void MarkerRectShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    painter.save();
    painter.setPen(Qt::NoPen);
    paintHighlighter(painter, *this, [&](double factor) {
        QColor fill = colorFromText(color);
        fill.setAlpha(static_cast<int>(std::lround(opacity * factor * 255)));
        painter.setBrush(fill);
        painter.drawRect(box());
    });
    painter.restore();
}

void MarkerRectShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintCornerBrackets(painter, box(), context.handleScale);
}

bool MarkerRectShape::hitTest(double x, double y) const
{
    const QRectF reach = box().adjusted(-kMarkerReach, -kMarkerReach, kMarkerReach, kMarkerReach);
    return x >= reach.left() && x <= reach.right() && y >= reach.top() && y <= reach.bottom();
}

void MarkerRectShape::toJson(QJsonObject &out) const
{
    BoxShape::toJson(out);
    out.insert(QStringLiteral("markerRect"), true);
}

void MarkerRectShape::takeAttributes(const ShapeAttributes &attributes)
{
    BoxShape::takeAttributes(attributes);
    opacity = 1.0;
    compositeOperation = QStringLiteral("multiply");
}

void MarkerRectShape::giveAttributes(ShapeAttributes &attributes) const
{
    BoxShape::giveAttributes(attributes);
    attributes.markerRectMode = true;
}

// --- ellipse ---------------------------------------------------------------------------------------------------------

void CircleShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    painter.save();
    painter.setPen(strokePen(*this, 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(box());
    painter.restore();
}

void CircleShape::paintSelection(QPainter &painter, const ShapeRenderContext &context) const
{
    paintRectOutline(painter, box(), context.handleScale);
    paintCornerBrackets(painter, box(), context.handleScale);
}

bool CircleShape::hitTest(double x, double y) const
{
    const QRectF around = box();
    if (around.width() <= kSmallestEllipse || around.height() <= kSmallestEllipse)
        return false;
    const std::array corners{around.topLeft(), around.topRight(), around.bottomRight(), around.bottomLeft()};
    for (const QPointF &corner : corners) {
        if (std::abs(x - corner.x()) < kCornerReach && std::abs(y - corner.y()) < kCornerReach)
            return true;
    }
    const double halfX = around.width() / 2;
    const double halfY = around.height() / 2;
    const double r = std::hypot((x - around.center().x()) / halfX, (y - around.center().y()) / halfY);
    return std::abs(r - 1) <= (thickness / 2 + kEllipseReach) / ((halfX + halfY) / 2);
}

Qt::CursorShape CircleShape::handleCursor(int) const
{
    return (start().x() < end().x()) == (start().y() < end().y()) ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
}

void CircleShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    writeEnds(out, plainKeys());
}

void CircleShape::readJson(const QJsonObject &in)
{
    readEnds(in, plainKeys());
}

// --- line ------------------------------------------------------------------------------------------------------------

void LineShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    painter.save();
    painter.setPen(strokePen(*this, opacity));
    painter.drawLine(start(), end());
    painter.restore();
}

bool LineShape::hitTest(double x, double y) const
{
    return squaredDistanceToSegment({x, y}, start(), end()) < kLineReach * kLineReach;
}

void LineShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    writeEnds(out, {QStringLiteral("x1"), QStringLiteral("y1"), QStringLiteral("x2"), QStringLiteral("y2")});
}

void LineShape::readJson(const QJsonObject &in)
{
    readEnds(in, {QStringLiteral("x1"), QStringLiteral("y1"), QStringLiteral("x2"), QStringLiteral("y2")});
}

} // namespace tavrel
