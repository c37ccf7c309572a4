#pragma once

#include "overlay/scroll_search.h"

namespace tavrel::ui {

/// Where a frame lies by the rows that are found on the page exactly as they are. Most pages scroll by whole pixels,
/// and then this is proof: it sees the whole frame, so that rows with little on them do not decide, and it sees every
/// other place that would do as well.
struct ExactVote
{
    enum Kind {
        Unknown,   ///< too few rows are the same: between pixel rows, or a picture that moves all over
        Certain,   ///< one place has them, and no other nearly as well
        Ambiguous, ///< the page repeats itself
    };
    Kind kind = Unknown;
    int offset = 0;        ///< the place that has most of them
    bool anywhere = false; ///< there is such a place; Unknown is then only a part of what the page has there
    bool isProof = false;  ///< Certain, and hardly a row of a good part of the frame is another than the page's

    /// What other evidence says does not contradict the rows.
    [[nodiscard]] bool allows(int other) const noexcept
    {
        return !anywhere || (other - offset <= 3 && offset - other <= 3);
    }
};

/// Asks the offsets within `radius` rows of `lastOffset`. Only the frame rows [first, end) have a say.
[[nodiscard]] ExactVote voteExactly(const ScrollSearch &search, int lastOffset, int radius, int first, int end);

} // namespace tavrel::ui
