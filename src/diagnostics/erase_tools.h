#pragma once

#include <QStringList>

namespace tavrel {

/// Removes a box from a picture file, or from a fresh grab for `-`. Prints the figures of every step and writes what
/// was looked at before and after, the mask of what differs and the subject.
///
/// values   what follows the option: picture, box as x,y,w,h in pixels, optionally the beginning of the files' names
/// returns  the exit code: 0 when all pictures have been written
[[nodiscard]] int runEraseImage(const QStringList &values);

/// Writes a picture of a page with smart erase shapes on it: as it was, erased, and one that still waits.
///
/// values   what follows the option: the file
[[nodiscard]] int renderSmartErasePreview(const QStringList &values);

} // namespace tavrel
