#include "overlay/hover_candidates.h"

#include <algorithm>
#include <cmath>

namespace tavrel::ui {
namespace {

constexpr double kSmallest = 2;        ///< a narrower or lower rectangle cannot be aimed at
constexpr double kSameSide = 1.5;      ///< closer sides are one and the same
constexpr double kInside = 1;          ///< tolerance of "lies in", per side
constexpr double kCoarseElement = 0.6; ///< of the window: such an element says no more than the window does

double areaOf(const QRectF &rect)
{
    return rect.width() * rect.height();
}

bool isUsable(const QRectF &rect)
{
    return rect.width() >= kSmallest && rect.height() >= kSmallest;
}

bool isSame(const QRectF &a, const QRectF &b)
{
    return std::abs(a.left() - b.left()) <= kSameSide && std::abs(a.top() - b.top()) <= kSameSide &&
           std::abs(a.right() - b.right()) <= kSameSide && std::abs(a.bottom() - b.bottom()) <= kSameSide;
}

bool liesIn(const QRectF &inner, const QRectF &outer, double tolerance)
{
    return inner.left() >= outer.left() - tolerance && inner.top() >= outer.top() - tolerance &&
           inner.right() <= outer.right() + tolerance && inner.bottom() <= outer.bottom() + tolerance;
}

void sortByArea(QList<QRectF> &rects)
{
    std::stable_sort(rects.begin(), rects.end(), [](const auto &a, const auto &b) { return areaOf(a) < areaOf(b); });
}

} // namespace

QList<QRectF> mergedCandidates(const HoverSources &sources)
{
    std::optional<QRectF> window;
    if (sources.window) {
        const QRectF shown = sources.window->intersected(sources.screen);
        if (isUsable(shown))
            window = shown;
    }
    QList<QRectF> list;
    for (const QRectF &element : sources.elements) {
        const QRectF shown = element.intersected(window.value_or(sources.screen));
        if (isUsable(shown))
            list.append(shown);
    }
    sortByArea(list);
    if (!window && list.isEmpty())
        return sources.image;

    if (list.isEmpty() || (window && areaOf(list.first()) >= kCoarseElement * areaOf(*window))) {
        for (const QRectF &box : sources.image) {
            if (!window || liesIn(box, *window, kSameSide))
                list.append(box);
        }
    }
    if (window)
        list.append(*window);
    if (sources.screen.isValid())
        list.append(sources.screen);
    sortByArea(list);
    const auto end = std::unique(list.begin(), list.end(), isSame);
    list.erase(end, list.end());
    return list;
}

std::optional<QRectF> stepUp(const QList<QRectF> &candidates, const QRectF &from)
{
    const auto found = std::find_if(candidates.begin(), candidates.end(), [&from](const QRectF &candidate) {
        return liesIn(from, candidate, kInside) && areaOf(candidate) > areaOf(from) + 1;
    });
    return found == candidates.end() ? std::nullopt : std::optional(*found);
}

std::optional<QRectF> stepDown(const QList<QRectF> &candidates, const QRectF &from)
{
    const auto found = std::find_if(candidates.rbegin(), candidates.rend(), [&from](const QRectF &candidate) {
        return liesIn(candidate, from, kInside) && areaOf(candidate) < areaOf(from) - 1;
    });
    return found == candidates.rend() ? std::nullopt : std::optional(*found);
}

QRectF walked(const QList<QRectF> &candidates, const QRectF &from, int steps)
{
    QRectF at = from;
    for (int left = std::abs(steps); left > 0; --left) {
        const auto next = steps > 0 ? stepUp(candidates, at) : stepDown(candidates, at);
        if (!next)
            break;
        at = *next;
    }
    return at;
}

std::optional<QRectF> windowToggled(const QList<QRectF> &candidates, const QRectF &target, const HoverSources &sources)
{
    if (!sources.window || candidates.isEmpty())
        return {};
    const QRectF window = sources.window->intersected(sources.screen);
    if (isSame(target, window))
        return candidates.first();
    const auto found = std::find_if(candidates.begin(), candidates.end(),
                                    [&window](const QRectF &candidate) { return isSame(candidate, window); });
    return found == candidates.end() ? window : *found;
}

const platform::WindowInfo *windowAt(const QList<platform::WindowInfo> &windows, const QPointF &global)
{
    const auto found = std::find_if(windows.begin(), windows.end(), [&global](const platform::WindowInfo &window) {
        const QRectF &area = window.geometry;
        return global.x() >= area.left() && global.x() < area.right() && global.y() >= area.top() &&
               global.y() < area.bottom();
    });
    return found == windows.end() ? nullptr : &*found;
}

} // namespace tavrel::ui
