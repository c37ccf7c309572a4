#pragma once

#include <QImage>
#include <QPointF>

namespace tavrel::ui {

/// Pixels along the side of what an eyedropper shows; the one in the middle is the one that it would take.
inline constexpr int kEyedropperSide = 11;

/// The pixels of `picture` around a point, straight from its memory.
///
/// point    logical: the picture's device pixel ratio makes it a pixel
/// returns  11 x 11, transparent where the picture ends; null for a point beside the picture
[[nodiscard]] QImage eyedropperSample(const QImage &picture, const QPointF &point);

} // namespace tavrel::ui
