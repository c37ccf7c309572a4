#pragma once

#include <QImage>

namespace tavrel::platform {

/// Facts about the desktop that are neither a window nor a screen grab.
class IDesktop
{
public:
    IDesktop() = default;
    IDesktop(const IDesktop &) = delete;
    IDesktop &operator=(const IDesktop &) = delete;
    virtual ~IDesktop() = default;

    /// The desktop's wallpaper, its longer side at most `maxSide` pixels; null when there is none to be had.
    [[nodiscard]] virtual QImage wallpaper(int maxSide) = 0;
};

} // namespace tavrel::platform
