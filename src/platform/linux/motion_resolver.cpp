#include "platform/linux/motion_resolver.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>

namespace tavrel::platform {
namespace {

constexpr double kTolerance = 1.0; ///< the server keeps fractions of a pixel that events do not show

bool isNear(const QPointF &a, const QPointF &b)
{
    return std::abs(a.x() - b.x()) <= kTolerance && std::abs(a.y() - b.y()) <= kTolerance;
}

} // namespace

std::vector<QPointF> MotionResolver::resolve(const QPointF &begin, const std::vector<Motion> &motions,
                                             const QPointF &end) const
{
    std::vector<QPointF> steps;
    std::vector<QPointF> places;
    QPointF step = begin;
    QPointF place = begin;
    for (const Motion &motion : motions) {
        step += QPointF(motion.x.value_or(0), motion.y.value_or(0));
        step.setX(std::clamp(step.x(), m_bounds.left(), std::max(m_bounds.left(), m_bounds.right() - 1)));
        step.setY(std::clamp(step.y(), m_bounds.top(), std::max(m_bounds.top(), m_bounds.bottom() - 1)));
        place = {motion.x.value_or(place.x()), motion.y.value_or(place.y())};
        steps.push_back(step);
        places.push_back(place);
    }
    if (motions.empty())
        return {};
    std::vector<QPointF> &path = !isNear(step, end) && isNear(place, end) ? places : steps;
    // What is left over, mostly a fraction of a pixel, is spread over the row.
    const QPointF rest = end - path.back();
    for (std::size_t i = 0; i < path.size(); ++i)
        path[i] += rest * (static_cast<double>(i + 1) / static_cast<double>(path.size()));
    return path;
}

} // namespace tavrel::platform
