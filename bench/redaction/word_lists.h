#pragma once

#include <QStringList>

namespace tavrel::redaction {

/// 200 common words each, what a reader with a dictionary tries.
[[nodiscard]] const QStringList &englishWords();
[[nodiscard]] const QStringList &chineseWords(); ///< two characters each

} // namespace tavrel::redaction
