#pragma once

#include "annotate/erase_pixels.h"

namespace tavrel::erase {

/// Fills the masked pixels with the texture of the known ones around: for every patch of 7 x 7 pixels that reaches into
/// the hole the most similar known patch is looked for at random and around what its neighbours have found, and all
/// patches vote on the colours, from a coarse picture to the full one.
///
/// The same input gives the same output, on any number of processors: the generator restarts at its seed, and large
/// holes are cut into bands that do not depend on who works on them.
/// cost  see bench_annotate_smart_erase
void patchFill(PixelBuffer &buffer, const Mask &mask, const CancelFlag &cancel = CancelFlag::never());

} // namespace tavrel::erase
