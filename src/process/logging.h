#pragma once

#include <QByteArray>
#include <QString>

namespace tavrel {

/// Where the log rotates: a file above this size becomes the one old generation.
constexpr qint64 kLogRotateBytes = 1'048'576;

/// Makes the log folder and sends all Qt messages of all threads to the log as well as to where they went before.
/// Returns the path of the log file. A file that cannot be written loses its lines silently.
QString startLogging();
/// Empty before startLogging().
[[nodiscard]] QString logPath();
/// The end of the log, at most `maxBytes`, starting at a line start; empty when there is no readable log.
[[nodiscard]] QByteArray readLogTail(qint64 maxBytes);

} // namespace tavrel
