#pragma once

#include <QStringList>

namespace tavrel {

/// Writes a picture of every control in all its states (at rest, hovered, pressed, with the keyboard, disabled) for
/// both themes, and of the attribute bar of every tool, and gives the exit code.
///
/// values  what follows the option on the command line: the folder, and optionally `--lang` with a language
[[nodiscard]] int renderControlGallery(const QStringList &values);

} // namespace tavrel
