#pragma once

#include <QStringList>

namespace tavrel {

/// Writes pictures of the colour board, the chip rows and the eyedropper's loupe, in both themes, and gives the exit
/// code.
///
/// values  what follows the option on the command line: the folder, and optionally `--lang` with a language
[[nodiscard]] int renderColorBoardPreview(const QStringList &values);

} // namespace tavrel
