#include "annotate/arrow_geometry.h"

#include "annotate/segment_distance.h"

#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace tavrel {
namespace {

constexpr int kSteps = 32;
constexpr int kHitSteps = 24;
constexpr int kTailPoints = 11;
constexpr double kTiny = 1e-6;
constexpr double kCurvedFrom = 0.5;
constexpr double kNotchRatio = 0.75;
constexpr double kShortest = 1.0;
constexpr double kThinTail = 0.05;
/// A quarter of a circle as a cubic curve.
constexpr double kArc = 0.5522847498;

double lengthOf(const QPointF &vector)
{
    return std::hypot(vector.x(), vector.y());
}

QPointF normalOf(const QPointF &direction)
{
    return {-direction.y(), direction.x()};
}

QPainterPath closedPath(const QPolygonF &points)
{
    QPainterPath path;
    path.addPolygon(points);
    path.closeSubpath();
    return path;
}

/// The end of an arrow: barbs at the base, a notch between them.
struct Head
{
    QPointF tip;
    QPointF axis; ///< unit vector towards the tip
    QPointF notch;
    double length = 0;
    double width = 0;
    double neckWidth = 0;

    [[nodiscard]] QPointF left() const { return notch + normalOf(axis) * (neckWidth / 2); }
    [[nodiscard]] QPointF right() const { return notch - normalOf(axis) * (neckWidth / 2); }
    /// Left notch point, left barb, tip, right barb, right notch point.
    [[nodiscard]] QPolygonF outline() const
    {
        const QPointF base = tip - axis * length;
        const QPointF barb = normalOf(axis) * (width / 2);
        return {QList<QPointF>{left(), base + barb, tip, base - barb, right()}};
    }
};

Head straightHead(const QPointF &tip, const QPointF &axis, const ArrowMetrics &metrics)
{
    return {tip,
            axis,
            tip - axis * (kNotchRatio * metrics.headLength),
            metrics.headLength,
            metrics.headWidth,
            metrics.neckWidth};
}

/// The straight arrow with one head: tail, one side, head, other side, and the round end of the tail.
QPainterPath straightArrow(const ArrowCourse &course, const QPointF &axis, const ArrowMetrics &metrics)
{
    const Head head = straightHead(course.end, axis, metrics);
    const double radius = metrics.tailWidth / 2;
    const QPointF across = normalOf(axis) * radius;
    const QPointF back = axis * radius;
    QPainterPath path(course.start + across);
    for (const QPointF &point : head.outline())
        path.lineTo(point);
    path.lineTo(course.start - across);
    if (radius > kThinTail) {
        const QPointF rear = course.start - back;
        path.cubicTo(course.start - across - back * kArc, rear - across * kArc, rear);
        path.cubicTo(rear + across * kArc, course.start + across - back * kArc, course.start + across);
    }
    path.closeSubpath();
    return path;
}

QList<QPainterPath> straightDouble(const ArrowCourse &course, const QPointF &axis, const ArrowMetrics &metrics)
{
    const Head front = straightHead(course.end, axis, metrics);
    const Head rear = straightHead(course.start, -axis, metrics);
    return {closedPath(QList<QPointF>{rear.right(), front.left(), front.right(), rear.left()}),
            closedPath(front.outline()), closedPath(rear.outline())};
}

/// The head at one end of a curve.
Head curvedHead(const ArrowCourse &course, bool isFront, double notchAt, const ArrowMetrics &metrics)
{
    const QPointF tip = isFront ? course.end : course.start;
    const QPointF notch = course.at(notchAt);
    const QPointF towardsTip = tip - notch;
    const double distance = lengthOf(towardsTip);
    QPointF axis = course.direction(notchAt) * (isFront ? 1.0 : -1.0);
    if (distance >= std::max(kTiny, 0.35 * metrics.headLength))
        axis = towardsTip / distance;
    return {tip, axis, notch, metrics.headLength, metrics.headWidth, metrics.neckWidth};
}

/// Replaces the last points of both sides by the notch points of a head, without crossing the sides over.
void joinSides(QPointF &left, QPointF &right, const QPointF &leftBefore, const QPointF &rightBefore, const Head &head)
{
    std::pair<QPointF, QPointF> ends{head.left(), head.right()};
    const double straight = lengthOf(ends.first - leftBefore) + lengthOf(ends.second - rightBefore);
    const double crossed = lengthOf(ends.second - leftBefore) + lengthOf(ends.first - rightBefore);
    if (crossed < straight)
        std::swap(ends.first, ends.second);
    left = ends.first;
    right = ends.second;
}

QList<QPainterPath> curvedArrow(const ArrowCourse &course, ArrowStyle style, const ArrowMetrics &metrics)
{
    const bool isDouble = style == ArrowStyle::Double;
    const double length = course.length();
    const double back = std::max(0.0, std::min(kNotchRatio * metrics.headLength, 0.85 * length));
    double from = isDouble ? course.parameterAt(back) : 0.0;
    double to = course.parameterAt(length - back);
    const Head front = curvedHead(course, true, to, metrics);
    const Head rear = curvedHead(course, false, from, metrics);
    if (isDouble && from > to)
        std::swap(from, to);

    QList<QPointF> left;
    QList<QPointF> right;
    for (int i = 0; i <= kSteps; ++i) {
        const double part = static_cast<double>(i) / kSteps;
        const double t = from + (to - from) * part;
        const double width =
            isDouble ? metrics.neckWidth : metrics.tailWidth + (metrics.neckWidth - metrics.tailWidth) * part;
        const QPointF across = normalOf(course.direction(t)) * (width / 2);
        left.append(course.at(t) + across);
        right.append(course.at(t) - across);
    }
    joinSides(left[kSteps], right[kSteps], left[kSteps - 1], right[kSteps - 1], front);
    if (isDouble)
        joinSides(left[0], right[0], left[1], right[1], rear);

    QPolygonF body(left);
    for (qsizetype i = right.size() - 1; i >= 0; --i)
        body.append(right[i]);
    const double radius = metrics.tailWidth / 2;
    if (!isDouble && radius > kThinTail) {
        const QPointF axis = course.direction(from);
        for (int i = 0; i < kTailPoints; ++i) {
            const double angle = std::numbers::pi * i / (kTailPoints - 1);
            body.append(course.start - normalOf(axis) * (radius * std::cos(angle)) - axis * (radius * std::sin(angle)));
        }
    }
    QList<QPainterPath> parts{closedPath(body), closedPath(front.outline())};
    if (isDouble)
        parts.append(closedPath(rear.outline()));
    for (QPainterPath &part : parts)
        part.setFillRule(Qt::WindingFill);
    return parts;
}

} // namespace

ArrowCourse ArrowCourse::make(const QPointF &start, const QPointF &end, const QPointF &offset)
{
    ArrowCourse course{start, end, offset};
    const QPointF chord = end - start;
    const double length = lengthOf(chord);
    if (length < kTiny)
        return course;
    const QPointF along = chord / length;
    const QPointF across = normalOf(along);
    course.offset = along * std::clamp(QPointF::dotProduct(offset, along), -length / 4, length / 4) +
                    across * QPointF::dotProduct(offset, across);
    return course;
}

bool ArrowCourse::isCurved() const
{
    return std::abs(offset.x()) > kCurvedFrom || std::abs(offset.y()) > kCurvedFrom;
}

QPointF ArrowCourse::at(double t) const
{
    const double u = 1 - t;
    return u * u * start + 2 * u * t * control() + t * t * end;
}

QPointF ArrowCourse::direction(double t) const
{
    const auto unit = [](const QPointF &vector) { return vector / lengthOf(vector); };
    const QPointF derivative = 2 * (1 - t) * (control() - start) + 2 * t * (end - control());
    if (lengthOf(derivative) >= kTiny)
        return unit(derivative);
    const QPointF nearby = t >= 0.5 ? end - at(0.8) : at(0.2) - start;
    if (lengthOf(nearby) >= kTiny)
        return unit(nearby);
    const QPointF chord = end - start;
    return lengthOf(chord) >= kTiny ? unit(chord) : QPointF(1, 0);
}

double ArrowCourse::length() const
{
    if (!isCurved())
        return lengthOf(end - start);
    double sum = 0;
    for (int i = 0; i < kSteps; ++i)
        sum += lengthOf(at(static_cast<double>(i + 1) / kSteps) - at(static_cast<double>(i) / kSteps));
    return sum;
}

double ArrowCourse::parameterAt(double length) const
{
    if (length <= 0)
        return 0;
    double run = 0;
    for (int i = 0; i < kSteps; ++i) {
        const double t = static_cast<double>(i) / kSteps;
        const double step = lengthOf(at(static_cast<double>(i + 1) / kSteps) - at(t));
        if (run + step >= length)
            return t + (step > kTiny ? (length - run) / step : 0.0) / kSteps;
        run += step;
    }
    return 1;
}

double ArrowCourse::squaredDistance(const QPointF &place) const
{
    if (!isCurved())
        return squaredDistanceToSegment(place, start, end);
    double nearest = std::numeric_limits<double>::max();
    QPointF from = start;
    for (int i = 1; i <= kHitSteps; ++i) {
        const QPointF to = at(static_cast<double>(i) / kHitSteps);
        nearest = std::min(nearest, squaredDistanceToSegment(place, from, to));
        from = to;
    }
    return nearest;
}

ArrowMetrics ArrowMetrics::make(ArrowStyle style, double thickness, double length)
{
    const bool isDouble = style == ArrowStyle::Double;
    ArrowMetrics metrics;
    metrics.headLength = 30 + 2 * thickness;
    metrics.headWidth = 16 + 1.8 * thickness;
    // An arrow shows at least half, one with two heads a third of its length as body.
    const double wanted = (isDouble ? 3 : 2) * metrics.headLength;
    const double shrink = wanted > length && wanted > 10 ? length / wanted : 1.0;
    metrics.headLength *= shrink;
    metrics.headWidth *= shrink;
    switch (style) {
    case ArrowStyle::Wedge:
    case ArrowStyle::WedgeOutline:
        metrics.neckWidth = (2 + 0.7 * thickness) * shrink;
        metrics.tailWidth = (1 + 0.22 * thickness) * shrink;
        break;
    case ArrowStyle::Double:
        metrics.neckWidth = 0.7 * thickness * shrink;
        break;
    default:
        metrics.neckWidth = metrics.tailWidth = 0.7 * thickness * shrink;
    }
    return metrics;
}

QList<QPainterPath> arrowParts(const ArrowCourse &course, ArrowStyle style, double thickness)
{
    const double length = course.length();
    if (style == ArrowStyle::Line || length < kShortest)
        return {};
    const ArrowMetrics metrics = ArrowMetrics::make(style, thickness, length);
    if (course.isCurved())
        return curvedArrow(course, style, metrics);
    const QPointF axis = (course.end - course.start) / length;
    if (style == ArrowStyle::Double)
        return straightDouble(course, axis, metrics);
    return {straightArrow(course, axis, metrics)};
}

QPainterPath arrowOutline(const QList<QPainterPath> &parts)
{
    if (parts.size() < 2)
        return parts.value(0);
    // Body and head meet in the two notch points. Qt's union of them leaves slivers there; the line goes along the
    // body to the first notch point, around the head and back from the second.
    QPolygonF body = parts[0].toSubpathPolygons().value(0);
    QPolygonF head = parts[1].toSubpathPolygons().value(0);
    if (body.size() < kSteps + 2 || head.size() < 5)
        return parts[0];
    head.resize(5);
    if (lengthOf(body[kSteps] - head.first()) > lengthOf(body[kSteps] - head.last()))
        std::reverse(head.begin(), head.end());
    QPolygonF outline(body.first(kSteps));
    outline += head;
    outline += QPolygonF(body.sliced(kSteps + 2));
    return closedPath(outline);
}

} // namespace tavrel
