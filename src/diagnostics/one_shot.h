#pragma once

#include <QStringList>

namespace tavrel {

/// Runs the first one-shot diagnostic that `arguments` name, without tray, lock or event loop.
///
/// arguments  as the process got them, program name first
/// returns    the exit code of the process; negative when no such option is present
[[nodiscard]] int runOneShot(const QStringList &arguments);

} // namespace tavrel
