#pragma once

#include <QDateTime>
#include <QString>

#include <functional>

namespace tavrel {

/// What the words of a name template stand for.
struct FilenameContext
{
    QString window{}; ///< title of the captured window
    QString app{};    ///< its application
    int index = 1;
    bool useUtc = false;

    friend bool operator==(const FilenameContext &, const FilenameContext &) = default;
};

[[nodiscard]] QString defaultNameTemplate();

/// Draws a number from 0 to bound - 1.
using RandomBelow = std::function<int(int bound)>;

/// Replaces the words in double braces: window, app, index, random (six letters and digits), and anything else as a
/// format of QDateTime. A blank template counts as the default one. Characters that some file system refuses become
/// "_". The result has no extension and is never empty; its length is not limited, see fileBaseName().
/// `random` is the global generator when empty. Safe to call from any thread.
[[nodiscard]] QString expandName(const QString &nameTemplate, const QDateTime &time, const FilenameContext &context,
                                 const RandomBelow &random = {});

/// The base name of a file as it goes to the disk: `name` cut to 200 bytes of UTF-8, `suffix` included, without
/// splitting what a reader sees as one character. The suffix ("@2x") stays whole, and there is room below the 255
/// bytes of common file systems for "_123.png" and for the name of a temporary file. A leading dot becomes "_",
/// because a window title must not make the file a hidden one.
[[nodiscard]] QString fileBaseName(const QString &name, const QString &suffix = {});

} // namespace tavrel
