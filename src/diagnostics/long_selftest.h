#pragma once

#include <QStringList>

namespace tavrel {

/// Stitches the synthetic page while it scrolls to its end, and holds every point of the result against where the
/// frames really were. Prints what became of each frame and how many points differ. Runs the event loop of the process.
///
/// values   what follows the option: the directory for the pictures; `--fake-capture` is taken for granted
/// returns  the exit code: 0 when no point differs and no row is missing
[[nodiscard]] int runLongSelftest(const QStringList &values);

} // namespace tavrel
