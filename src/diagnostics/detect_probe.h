#pragma once

#include <QString>

namespace tavrel {

/// Grabs the display under the pointer and draws on it what hovering finds there: the windows of the display (blue),
/// and at the pointer the boxes of the picture (green), the elements (orange) and what a click would take (red). Prints
/// the candidates from the smallest out. Runs the event loop of the process.
///
/// returns  the exit code: 0 when the picture has been written
[[nodiscard]] int runDetectProbe(const QString &path);

} // namespace tavrel
