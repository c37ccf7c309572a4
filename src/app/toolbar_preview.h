#pragma once

#include <QStringList>

namespace tavrel {

/// Runs `--render-toolbar-preview <out.png>` or `--render-toolbar-config-preview <out.png>`, when `arguments` have one
/// of them: pictures of the capture toolbar and of its settings in both themes. `--lang <code>` chooses the language.
///
/// returns    the exit code of the process; negative when there is no such option
[[nodiscard]] int runToolbarPreview(const QStringList &arguments);

} // namespace tavrel
