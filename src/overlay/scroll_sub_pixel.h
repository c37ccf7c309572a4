#pragma once

#include "overlay/scroll_bands.h"

#include <optional>

namespace tavrel::ui {

/// The fraction of a row by which a frame lies beside the canvas's rows, where a page may stand between pixel rows:
/// frame row y + fraction shows what canvas row y + offset shows. From phase correlation of columns; nothing when they
/// do not agree or too few say anything: then the frame may well lie elsewhere.
[[nodiscard]] std::optional<float> subPixelShift(const GreyFrame &frame, const ScrollCanvas &canvas,
                                                 const ScrollBands &bands);

} // namespace tavrel::ui
