#pragma once

#include <QRect>
#include <QRectF>
#include <QRegion>

namespace tavrel::ui {

/// What stands on the screen after a paint, or would after the next one. Overlay coordinates; null for what is absent.
struct PaintedRegions
{
    bool everything = true; ///< the next update must be total
    QRectF selectionBox;    ///< selection grown by 16 on each side
    QRectF selectionRect;   ///< the selection while it is being drawn, moved or resized
    QRectF sizeLabel;       ///< grown by 4
    QRectF hover;           ///< grown by 4
    QRectF hint;            ///< grown by 4
    int hintKey = 0;
    QRectF magnifier; ///< grown by 3
    QRectF toast;     ///< grown by 4
};

/// The part of the overlay that differs between two states. While a selection is dragged that is its frame and the
/// strip that it covers or uncovers, not its interior: this is what keeps the pointer fluid on large displays.
[[nodiscard]] QRegion dirtyRegion(const PaintedRegions &before, const PaintedRegions &now, const QRect &overlay);

} // namespace tavrel::ui
