#pragma once

#include <QStringList>

namespace tavrel {

/// Write a picture of the toolbar, or of the dialog that configures it, in both themes, and give the exit code.
///
/// values  what follows the option on the command line: the file, and optionally `--lang` with a language
[[nodiscard]] int renderToolbarPreview(const QStringList &values);
[[nodiscard]] int renderToolbarConfigPreview(const QStringList &values);

} // namespace tavrel
