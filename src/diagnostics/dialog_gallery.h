#pragma once

#include <QStringList>

namespace tavrel {

/// Renders every kind of dialog, a menu, window buttons in all their states and the parts of a studio window into a
/// folder, in both themes. The ratio is that of the process.
///
/// values   folder, then optionally "--lang" and a language
/// returns  0; 1 when a picture could not be written; 2 for bad arguments
[[nodiscard]] int renderDialogGallery(const QStringList &values);

} // namespace tavrel
