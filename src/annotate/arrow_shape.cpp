#include "annotate/arrow_shape.h"

#include "annotate/vector_shapes.h"

#include <utility>

namespace tavrel {
namespace {

constexpr double kSquaredReach = 150.0;
constexpr double kFillPen = 0.5;
constexpr double kOutlinePen = 1.5;
constexpr double kWideOutlinePen = 2.5;
constexpr double kWideFrom = 10.0;
constexpr double kMiterLimit = 10.0;
constexpr double kShortest = 1.0;
constexpr double kGlowReach = 8.0; ///< of the mark around a hovered arrow

/// The outer line of the stroke around a shape without crossings: filled, it is the shape with its stroke.
QPainterPath outermost(const QPainterPath &stroke)
{
    QPolygonF widest;
    for (const QPolygonF &line : stroke.toSubpathPolygons()) {
        if (line.boundingRect().width() >= widest.boundingRect().width())
            widest = line;
    }
    QPainterPath path;
    path.addPolygon(widest);
    path.closeSubpath();
    path.setFillRule(Qt::WindingFill);
    return path;
}

} // namespace

void ArrowShape::paint(QPainter &painter, const ShapeRenderContext &) const
{
    const ArrowCourse course = this->course();
    if (course.length() < kShortest)
        return;
    painter.save();
    QPen pen = strokePen(*this, 1.0);
    if (arrowStyle == ArrowStyle::Line) {
        painter.setBrush(Qt::NoBrush);
        QPainterPath path(course.start);
        if (course.isCurved())
            path.quadTo(course.control(), course.end);
        else
            path.lineTo(course.end);
        painter.strokePath(path, pen);
        painter.restore();
        return;
    }
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    pen.setMiterLimit(kMiterLimit);
    const QList<QPainterPath> parts = arrowParts(course, arrowStyle, thickness);
    if (arrowStyle == ArrowStyle::WedgeOutline) {
        pen.setWidthF(thickness > kWideFrom ? kWideOutlinePen : kOutlinePen);
        painter.strokePath(arrowOutline(parts), pen);
    } else {
        // A pen this thin takes a short cut whose result depends on where on the picture it is; its outline does not.
        pen.setWidthF(kFillPen);
        const QPainterPathStroker edge(pen);
        for (const QPainterPath &part : parts) {
            const QPainterPath outline = edge.createStroke(part);
            if (!course.isCurved()) {
                painter.fillPath(outermost(outline), pen.color());
                continue;
            }
            painter.fillPath(part, pen.color());
            painter.fillPath(outline, pen.color());
        }
    }
    painter.restore();
}

bool ArrowShape::hitTest(double x, double y) const
{
    const ArrowCourse course = this->course();
    if (!course.isCurved() && course.start == course.end)
        return false;
    return course.squaredDistance({x, y}) < kSquaredReach;
}

QList<QPointF> ArrowShape::handles() const
{
    return {start(), course().handle(), end()};
}

int ArrowShape::setHandle(int index, double x, double y)
{
    if (index == 0)
        setEnds({x, y}, end());
    else if (index == 1)
        m_offset = QPointF(x, y) - (start() + end()) / 2;
    else if (index == 2)
        setEnds(start(), {x, y});
    return index;
}

QRectF ArrowShape::inkBounds() const
{
    const ArrowCourse course = this->course();
    QRectF all = SegmentShape::inkBounds();
    for (const QPainterPath &part : arrowParts(course, arrowStyle, thickness))
        all |= part.controlPointRect();
    if (arrowStyle == ArrowStyle::Line && course.isCurved()) {
        QPainterPath path(course.start);
        path.quadTo(course.control(), course.end);
        all |= path.boundingRect();
    }
    return all;
}

QRectF ArrowShape::paintedBounds() const
{
    const double pad = thickness / 2 + kGlowReach;
    return SegmentShape::paintedBounds() | inkBounds().adjusted(-pad, -pad, pad, pad);
}

QList<QRectF> ArrowShape::paintedParts() const
{
    // Half the widest head and the reach of the marks.
    return course().isCurved() ? QList<QRectF>{paintedBounds()} : partsAlong(thickness + 24);
}

void ArrowShape::transform(const ImageTransform &transform)
{
    const QPointF handle = transform.map((start() + end()) / 2 + m_offset);
    setEnds(transform.map(start()), transform.map(end()));
    m_offset = handle - (start() + end()) / 2;
}

void ArrowShape::scale(double factor)
{
    SegmentShape::scale(factor);
    m_offset *= factor;
}

void ArrowShape::toJson(QJsonObject &out) const
{
    writeBase(out);
    writeEnds(out, plainKeys());
    out.insert(QStringLiteral("ctrlOffX"), m_offset.x());
    out.insert(QStringLiteral("ctrlOffY"), m_offset.y());
}

void ArrowShape::readJson(const QJsonObject &in)
{
    readEnds(in, plainKeys());
    m_offset = {readLength(in, QStringLiteral("ctrlOffX")), readLength(in, QStringLiteral("ctrlOffY"))};
}

void ArrowShape::takeAttributes(const ShapeAttributes &attributes)
{
    SegmentShape::takeAttributes(attributes);
    arrowStyle = attributes.arrowStyle;
}

bool ArrowShape::applyAttribute(ShapeAttribute attribute, const ShapeAttributes &attributes)
{
    if (attribute != ShapeAttribute::ArrowStyle)
        return SegmentShape::applyAttribute(attribute, attributes);
    return std::exchange(arrowStyle, attributes.arrowStyle) != attributes.arrowStyle;
}

} // namespace tavrel
