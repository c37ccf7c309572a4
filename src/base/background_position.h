#pragma once

#include <QtGlobal>

namespace tavrel::edit {

/// Where a picture stands on its background. Custom comes with two fractions of the free room.
enum class BackgroundPosition : qint32 {
    Center = 0,
    TopLeft = 1,
    Top = 2,
    TopRight = 3,
    Left = 4,
    Right = 5,
    BottomLeft = 6,
    Bottom = 7,
    BottomRight = 8,
    Custom = 9,
};

} // namespace tavrel::edit
