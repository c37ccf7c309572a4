#pragma once

#include "annotate/shape_enums.h"

#include <QList>
#include <QPainterPath>
#include <QPointF>

namespace tavrel {

/// The course of an arrow from its start to its tip: straight, or a quadratic curve through a handle.
struct ArrowCourse
{
    QPointF start;
    QPointF end;
    /// Where the curve handle lies, from the middle of the chord. Along the chord it is held within a quarter of the
    /// chord's length, so that the curve cannot fold back on itself.
    QPointF offset;

    /// offset  as the user has dragged it
    [[nodiscard]] static ArrowCourse make(const QPointF &start, const QPointF &end, const QPointF &offset);

    [[nodiscard]] QPointF middle() const { return (start + end) / 2; }
    [[nodiscard]] QPointF handle() const { return middle() + offset; }
    /// The control point, such that the curve passes through the handle half-way.
    [[nodiscard]] QPointF control() const { return middle() + 2 * offset; }
    [[nodiscard]] bool isCurved() const;
    [[nodiscard]] QPointF at(double t) const;
    /// Unit direction at a parameter; a usable one even where the curve stands still.
    [[nodiscard]] QPointF direction(double t) const;
    /// Length of the chord, or of the curve measured along 32 steps.
    [[nodiscard]] double length() const;
    /// The parameter at which the curve has run a length from its start; 0 for none, 1 beyond its end.
    [[nodiscard]] double parameterAt(double length) const;
    /// Squared distance of a place; a curve is sampled at 24 steps.
    [[nodiscard]] double squaredDistance(const QPointF &place) const;
};

/// Sizes of an arrow's parts for a stroke width and a length; a short arrow is smaller in all.
struct ArrowMetrics
{
    double headLength = 0;
    double headWidth = 0;
    double neckWidth = 0; ///< of the body where it meets the head
    double tailWidth = 0;

    [[nodiscard]] static ArrowMetrics make(ArrowStyle style, double thickness, double length);
};

/// The outline of an arrow in filled parts: body, then heads. The style `Line` is a bare stroke and has no parts.
/// A straight arrow with one head is one part. Empty for an arrow shorter than 1.
[[nodiscard]] QList<QPainterPath> arrowParts(const ArrowCourse &course, ArrowStyle style, double thickness);

/// The line around all parts of an arrow with one head, as arrowParts() gives them.
[[nodiscard]] QPainterPath arrowOutline(const QList<QPainterPath> &parts);

} // namespace tavrel
