#pragma once

#include <QRectF>
#include <QSizeF>

namespace tavrel::ui {

/// Where the picture of the growing page stands during a scrolling capture, in logical pixels of the overlay.
struct LongPreviewPlace
{
    QRectF panel;
    QRectF image; ///< inside the panel, every side on a device pixel
};

/// Right of the selection, else left of it, else in it; its bottom on that of the selection.
///
/// page   logical size of the page so far; an empty one counts as that of the selection
/// ratio  device pixels to a logical one
[[nodiscard]] LongPreviewPlace placeLongPreview(const QRectF &selection, const QSizeF &page, const QSizeF &overlay,
                                                double ratio);

} // namespace tavrel::ui
