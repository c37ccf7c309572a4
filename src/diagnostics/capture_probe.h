#pragma once

#include <QStringList>

namespace tavrel {

/// `--capture-probe <outDir> [--request-permission] [--compare <png>]`: grabs all displays as a capture does and writes
/// one PNG for each. With a picture to compare, the primary display has to equal it, point by point.
///
/// returns  0, 1 when grabbing, writing or the comparison failed, 2 for wrong arguments
[[nodiscard]] int runCaptureProbe(const QStringList &values);

} // namespace tavrel
