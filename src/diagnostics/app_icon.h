#pragma once

#include <QStringList>

namespace tavrel {

/// `--render-app-icon <iconsetDir>`: the program's icon in every size that desktops ask for, one NxN.png each.
///
/// returns  0, 1 when a picture cannot be written, 2 for wrong arguments
[[nodiscard]] int renderAppIcon(const QStringList &values);

/// `--render-document-icon <iconsetDir>`: likewise the icon of a recording in a file manager, a page that bears the
/// program's icon.
[[nodiscard]] int renderDocumentIcon(const QStringList &values);

} // namespace tavrel
