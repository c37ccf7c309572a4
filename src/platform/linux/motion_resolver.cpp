#include "platform/linux/motion_resolver.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrel::platform {
namespace {

constexpr double kTolerance = 1.0; ///< the server keeps fractions of a pixel that events do not show

bool isNear(const QPointF &a, const QPointF &b)
{
    return std::abs(a.x() - b.x()) <= kTolerance && std::abs(a.y() - b.y()) <= kTolerance;
}

} // namespace

std::vector<QPointF> MotionResolver::follow(const QPointF &begin, const std::vector<Motion> &motions,
                                            bool placesOnly) const
{
    std::vector<QPointF> path;
    path.reserve(motions.size());
    QPointF at = begin;
    for (const Motion &motion : motions) {
        if (placesOnly || motion.isPlace)
            at = {motion.x.value_or(at.x()), motion.y.value_or(at.y())};
        else
            at += QPointF(motion.x.value_or(0), motion.y.value_or(0));
        at.setX(std::clamp(at.x(), m_bounds.left(), std::max(m_bounds.left(), m_bounds.right() - 1)));
        at.setY(std::clamp(at.y(), m_bounds.top(), std::max(m_bounds.top(), m_bounds.bottom() - 1)));
        path.push_back(at);
    }
    return path;
}

std::vector<QPointF> MotionResolver::resolve(const QPointF &begin, const std::vector<Motion> &motions,
                                             const QPointF &end) const
{
    std::vector<QPointF> path = follow(begin, motions, false);
    if (path.empty())
        return path;
    if (!isNear(path.back(), end)) {
        std::vector<QPointF> places = follow(begin, motions, true);
        if (isNear(places.back(), end))
            path = std::move(places);
    }
    // What is left over, mostly a fraction of a pixel, is spread over the row.
    const QPointF rest = end - path.back();
    for (std::size_t i = 0; i < path.size(); ++i)
        path[i] += rest * (static_cast<double>(i + 1) / static_cast<double>(path.size()));
    return path;
}

} // namespace tavrel::platform
