#pragma once

#include <QString>

/// What the user is told when a hotkey cannot be had; the same on every system.
namespace tavrel::platform::hotkey_texts {

[[nodiscard]] QString invalidCombo();
[[nodiscard]] QString unsupportedKey();
[[nodiscard]] QString takenElsewhere();
/// The keyboard cannot be watched at all; `code` is the system's error.
[[nodiscard]] QString listenerFailed(int code);

} // namespace tavrel::platform::hotkey_texts
