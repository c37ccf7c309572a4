#pragma once

#include "annotate/erase_pixels.h"

namespace tavrel::erase {

/// Fills the masked pixels of a flat or softly shaded picture: each becomes the mean of its neighbours, which is the
/// smoothest surface through the known pixels around. Leaves everything when no pixel is known.
///
/// iterations  sweeps at full size, at least 1. Coarser levels of the multigrid are cheap: they are swept at least as
///             often and on until no channel changes by 0.25, in wide holes by less
/// cost        see bench_annotate_smart_erase
void harmonicFill(PixelBuffer &buffer, const Mask &mask, int iterations,
                  const CancelFlag &cancel = CancelFlag::never());

} // namespace tavrel::erase
