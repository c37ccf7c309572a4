#pragma once

#include <QStringList>

namespace tavrel {

/// Opens a window with the program's own chrome and prints its geometry, frame and margins as it comes up, maximised
/// and restored.
///
/// returns  0; 1 when the window system did not carry out a step within two seconds; 2 for bad arguments
[[nodiscard]] int runWindowChromeProbe(const QStringList &values);

} // namespace tavrel
