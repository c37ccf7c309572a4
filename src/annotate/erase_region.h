#pragma once

#include "annotate/erase_pixels.h"
#include "annotate/erase_region_mask.h"
#include "annotate/erase_segment.h"
#include "annotate/shape_enums.h"

#include <QImage>
#include <QPair>
#include <QRect>
#include <QString>

namespace tavrel {

/// A box in source pixels and how it is to be filled.
using EraseSpec = QPair<QRect, EraseSolver>;

namespace erase {

enum class Path { None, Smooth, Texture };

/// What happened to one box, for diagnostics.
struct RegionInfo
{
    Path path = Path::None;
    RegionMaskStats region;
    SubjectStats subject; ///< only for a box that was segmented
    int maskPixels = 0;   ///< of those inside the box
};

/// What replaces the pixels of one box.
struct RegionResult
{
    QRect window;    ///< source pixels that were looked at; null for a box outside the picture
    QPoint position; ///< of `patch` in the source
    QImage patch;    ///< ARGB32: opaque where the source is replaced, transparent elsewhere; may be null
    RegionInfo info;

    /// Writes the patch into a picture of the source's size, not outside `clip`.
    ///
    /// target  RGB32
    void pasteInto(QImage &target, const QRect &clip) const;
};

/// Removes what is in a box of `source` and paints in what was behind it. Nothing outside the box is replaced.
///
/// source   RGB32
/// cancel   once set the result is of no use
/// budget   on two cores 400 ms for a box of 600 x 400 and 2.5 s for one of 1600 x 900, whichever solver runs; see
///          bench_annotate_smart_erase: the slowest took 0.3 s and 1.5 s there on a busy machine
[[nodiscard]] RegionResult eraseRegion(const QImage &source, const EraseSpec &spec,
                                       const CancelFlag &cancel = CancelFlag::never());

} // namespace erase
} // namespace tavrel
