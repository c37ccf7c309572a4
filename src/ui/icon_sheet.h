#pragma once

#include <QImage>
#include <QStringList>

namespace tavrel::ui {

/// Every icon of every set with its name, at 18, 24 and 48 pixels, in both themes side by side. For looking at.
[[nodiscard]] QImage renderIconSheet();

/// The same for the named glyphs, whichever set they are in; all glyphs of the editor and line sets when the list is
/// empty. An unknown name keeps its place and stays empty.
[[nodiscard]] QImage renderGlyphSheet(const QStringList &names);

} // namespace tavrel::ui
