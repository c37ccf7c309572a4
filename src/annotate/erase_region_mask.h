#pragma once

#include "annotate/erase_pixels.h"

namespace tavrel::erase {

struct RegionMaskStats
{
    bool fellBack = false; ///< the mask is the whole box
    double noise = 0;      ///< how far the surroundings differ from what they predict; 8 and more is a texture
    int threshold = 0;
    int subjectPixels = 0;
    int maskPixels = 0;
};

/// Predicts the background of a box from a ring around it and marks what differs: the object in the box, followed over
/// the edge of the box as far as growReach.
///
/// box        in pixels of the buffer; clipped to it
/// stats      may be null
/// cleaned    may be null; gets a copy of the buffer in which nothing but the background is left outside the mask
/// predicted  may be null; gets the prediction for every pixel
/// returns    a mask of the buffer's size; the whole box with its margin when nothing or too much of it differs
[[nodiscard]] Mask buildRegionMask(const PixelBuffer &buffer, const QRect &box, RegionMaskStats *stats,
                                   PixelBuffer *cleaned, PixelBuffer *predicted);

} // namespace tavrel::erase
