#pragma once

#include <QString>

#include <xkbcommon/xkbcommon.h>

namespace tavrel::platform {

/// The display name of a key that makes this symbol: letters and digits as themselves, the keys that have a name in
/// every language by it ("Enter", "Ctrl", "F5"); empty for anything else.
[[nodiscard]] QString keyName(xkb_keysym_t symbol);

/// Qt's code of the key, Qt::Key_unknown when it has none.
[[nodiscard]] int qtKeyOf(xkb_keysym_t symbol);

} // namespace tavrel::platform
