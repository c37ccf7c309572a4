#pragma once

#include <QStringList>

namespace tavrel {

/// `--hw-probe`: starts the input monitor, plays a move, a click, a notch of the wheel and a key, and prints what the
/// monitor saw of them. The click lands on a window of its own.
///
/// returns  0 when everything was seen, 1 when not, 2 for wrong arguments
[[nodiscard]] int runHwProbe(const QStringList &values);

} // namespace tavrel
