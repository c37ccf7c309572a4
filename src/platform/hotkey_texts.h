#pragma once

#include <QString>
#include <QStringList>

/// What the user is told when a hotkey cannot be had; the same on every system.
namespace tavrel::platform::hotkey_texts {

[[nodiscard]] QString invalidCombo();
[[nodiscard]] QString unsupportedKey();
/// `suspects` are the programs that may have it, in words; may be empty.
[[nodiscard]] QString takenElsewhere(const QStringList &suspects = {});
/// How a window manager is named among the suspects.
[[nodiscard]] QString windowManager(const QString &name);
/// The keyboard cannot be watched at all; `code` is the system's error.
[[nodiscard]] QString listenerFailed(int code);

} // namespace tavrel::platform::hotkey_texts
