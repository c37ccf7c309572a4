#pragma once

#include <QFileDevice>
#include <QString>

#include <functional>

class QIODevice;

namespace tavrel {

// Files that stand whole or not at all. The content is written beside the place under a temporary name and brought to
// the disk before the file gets its name, in the folder's file system; until then nobody sees it, and a failure leaves
// everything as it was. Slow disks hold the caller: not for the GUI thread unless the file is small. Any thread.

/// Fills the file; false gives it up.
using FileContent = std::function<bool(QIODevice &device)>;

/// Writes `path` in one step: it holds all the content or what it held before. The folder has to be there.
///
/// permissions  of the file, set before the first byte is written; none means those of the file that is replaced, or
///              what the process gives to new ones
[[nodiscard]] bool replaceFile(const QString &path, const FileContent &content,
                               QFileDevice::Permissions permissions = {});

/// The n-th choice for a file: "base.extension", then "base_1.extension", "base_2.extension" and so on.
[[nodiscard]] QString numberedPath(const QString &directory, const QString &baseName, const QString &extension, int n);

/// Creates a file under the first free name of numberedPath() and returns its path. A link to nowhere takes a name too.
/// The finished file gets its name by an operation that fails on an existing one, so that a file which another process
/// made meanwhile is not overwritten. Empty on failure, with nothing left behind; `failedPath` is then the name that
/// was tried.
[[nodiscard]] QString createFile(const QString &directory, const QString &baseName, const QString &extension,
                                 const FileContent &content, QString *failedPath = nullptr);

} // namespace tavrel
