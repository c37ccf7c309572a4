#pragma once

#include "overlay/scroll_locator.h"

#include <vector>

namespace tavrel::ui {

/// 48 rows of a frame, the last one fewer, and what they say about the page.
struct ScrollBand
{
    enum class Kind {
        Ok,     ///< taken, at its own offset
        Flat,   ///< without evidence of its own; taken at the frame's offset
        Moving, ///< a header or an animation: fits elsewhere; not taken
        Failed, ///< fits nowhere; not taken
    };

    int first = 0;
    int end = 0;
    int offset = 0;
    double texture = 0;    ///< grey levels from row to row
    double mean = 0;       ///< grey levels that it differs from the canvas at its offset, over all rows
    double confidence = 0; ///< 0 to 1
    bool unseen = false;   ///< the page does not have these rows yet: the band goes with the frame
    Kind kind = Kind::Failed;
};

/// Where a frame lies once its bands have been asked.
struct ScrollBands
{
    int offset = 0;
    std::vector<ScrollBand> bands; ///< from the top
};

/// Looks up every band of a frame within 48 rows of where the probes place it, moves the frame to the offset that most
/// of them agree on, and tells which bands follow it.
///
/// certain  the frame stays where it is, and the bands that follow it do so to the row
[[nodiscard]] ScrollBands readBands(const ScrollSearch &search, const ScrollMatch &match, bool certain);

} // namespace tavrel::ui
