#pragma once

#include <QStringList>

namespace tavrel {

/// Prints whether elements of other applications can be read, and the visible windows from top to bottom, and gives
/// the exit code of the process.
///
/// values  what follows the option on the command line: nothing, or `--request-access` to ask the system for it first
[[nodiscard]] int runElementsProbe(const QStringList &values);

} // namespace tavrel
