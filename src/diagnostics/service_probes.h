#pragma once

#include <QStringList>

namespace tavrel {

/// `--autostart-probe [on|off]`: switches the start at login over and back, or to what is said, and prints the state
/// each time.
///
/// returns  0 when every switch took, 1 when not, 2 for wrong arguments
[[nodiscard]] int runAutoStartProbe(const QStringList &values);

/// `--permissions-probe`: prints the state of each permission, one in a line.
///
/// returns  0, or 2 for wrong arguments
[[nodiscard]] int runPermissionsProbe(const QStringList &values);

} // namespace tavrel
