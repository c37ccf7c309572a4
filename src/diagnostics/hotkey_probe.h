#pragma once

#include <QStringList>

namespace tavrel {

/// `--hotkey-probe`: registers every hotkey of the settings, plays each one that could be had as an injected press, and
/// prints what came of it and the command that a desktop's own shortcuts can call in its place.
///
/// returns  0 when every hotkey that is switched on was registered and arrived, 1 when not, 2 for wrong arguments
[[nodiscard]] int runHotkeyProbe(const QStringList &values);

} // namespace tavrel
