#pragma once

#include <QRect>
#include <QRectF>
#include <QSize>

namespace tavrel {

/// The pixels of a selection in a picture: every edge is rounded, never the size, and the result cut to the picture.
///
/// selection  logical units from the picture's top-left
/// ratio      device pixels per unit, above 0
[[nodiscard]] QRect cropRect(const QRectF &selection, double ratio, const QSize &pixels);

} // namespace tavrel
