#pragma once

#include "annotate/erase_pixels.h"

namespace tavrel::erase {

struct SubjectStats
{
    bool ok = false;     ///< false: nothing was told apart and the mask is the whole box
    double fraction = 0; ///< of the box that belongs to the subject
    int iterations = 0;
    int step = 1; ///< pixels a side of a grid cell
};

/// Cuts a subject out of textured surroundings: colour models of the ring around the box and of its middle, and a
/// minimum cut between them on a grid of at most 112 cells a side.
///
/// box      in pixels of the buffer; clipped to it
/// stats    may be null
/// returns  a mask of the buffer's size; the whole box when no subject is found
[[nodiscard]] Mask segmentSubject(const PixelBuffer &buffer, const QRect &box, SubjectStats *stats,
                                  const CancelFlag &cancel = CancelFlag::never());

} // namespace tavrel::erase
