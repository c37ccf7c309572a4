#pragma once

#include "platform/element_detector.h"

#include <QList>
#include <QRectF>

#include <optional>

namespace tavrel::ui {

/// What the list of hover candidates is made of. All in overlay coordinates.
struct HoverSources
{
    QList<QRectF> image;          ///< boxes seen in the picture
    QList<QRectF> elements;       ///< user interface elements, innermost first
    std::optional<QRectF> window; ///< the window under the pointer
    QRectF screen;                ///< what can be selected

    friend bool operator==(const HoverSources &, const HoverSources &) = default;
};

/// One ascending list without doubles: elements, window and screen, and the boxes of the picture where the elements
/// say little. Without a window and elements it is the boxes alone.
[[nodiscard]] QList<QRectF> mergedCandidates(const HoverSources &sources);

/// The next larger candidate around a rectangle, the next smaller one in it; nothing at the end of the list.
[[nodiscard]] std::optional<QRectF> stepUp(const QList<QRectF> &candidates, const QRectF &from);
[[nodiscard]] std::optional<QRectF> stepDown(const QList<QRectF> &candidates, const QRectF &from);
/// The end of `steps` steps, up for a positive number; `from` itself where there is no way.
[[nodiscard]] QRectF walked(const QList<QRectF> &candidates, const QRectF &from, int steps);

/// The window if `target` is something else, else the smallest candidate. Nothing without a window or candidates.
[[nodiscard]] std::optional<QRectF> windowToggled(const QList<QRectF> &candidates, const QRectF &target,
                                                  const HoverSources &sources);

/// The top-most window at a global point, null for none. A point on the right or lower edge is beside the window.
[[nodiscard]] const platform::WindowInfo *windowAt(const QList<platform::WindowInfo> &windows, const QPointF &global);

} // namespace tavrel::ui
