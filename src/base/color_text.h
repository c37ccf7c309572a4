#pragma once

#include <QColor>
#include <QString>

namespace tavrel {

/// Reads a stored colour: RRGGBB, RGB (each digit doubled) or AARRGGBB in hexadecimal, with or without a leading
/// "#", in any case. Anything else is opaque black.
[[nodiscard]] QColor colorFromText(const QString &text);

} // namespace tavrel
