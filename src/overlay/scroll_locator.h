#pragma once

#include "overlay/scroll_search.h"

#include <optional>

namespace tavrel::ui {

/// Where a frame lies on the page, as the probes have it.
struct ScrollMatch
{
    int offset = 0;
    int probes = 0;      ///< that agree
    double contrast = 0; ///< the best of them
    double lead = 0;     ///< how much better than elsewhere it fits over all rows, moving ones too; the best of them
    double score = 0;    ///< their mean
    double quality = 0;  ///< the best of them, 0 to 1
};

/// The rows that a frame of `height` may lie away from the last offset, doubled with each miss up to three. Nothing
/// when the search would be too long.
[[nodiscard]] std::optional<int> searchRadius(int height, int misses);

/// Places a frame within `radius` rows of `lastOffset`: three probes, each with its own part of the frame so that one
/// moving region cannot spoil them all, look for their liveliest strip on the canvas; those that are sure of
/// themselves vote. Nothing when none is: a flat, repeating or unknown picture.
///
/// search  covers the canvas from lastOffset - radius - 48 to lastOffset + radius + height + 49
[[nodiscard]] std::optional<ScrollMatch> locate(const ScrollSearch &search, int lastOffset, int radius);

} // namespace tavrel::ui
