#pragma once

#include <QPointF>

#include <algorithm>

namespace tavrel {

/// Squared distance of a point to a segment; to its start when it has no length.
[[nodiscard]] inline double squaredDistanceToSegment(const QPointF &place, const QPointF &from, const QPointF &to)
{
    const QPointF along = to - from;
    const QPointF offset = place - from;
    const double length = QPointF::dotProduct(along, along);
    const double t = length > 0 ? std::clamp(QPointF::dotProduct(offset, along) / length, 0.0, 1.0) : 0.0;
    const QPointF away = offset - along * t;
    return QPointF::dotProduct(away, away);
}

} // namespace tavrel
