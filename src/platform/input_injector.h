#pragma once

namespace tavrel {
struct KeyCombo;
}

namespace tavrel::platform {

/// Plays input as if it came from the devices, for checks that the program makes of itself. Each call returns when the
/// system has taken the input; false when it takes none, or has no such key or button. GUI thread only.
class IInputInjector
{
public:
    IInputInjector() = default;
    IInputInjector(const IInputInjector &) = delete;
    IInputInjector &operator=(const IInputInjector &) = delete;
    virtual ~IInputInjector() = default;

    /// Presses and releases a key with its modifiers.
    virtual bool tap(const KeyCombo &combo) = 0;
    /// Moves the pointer by device pixels.
    virtual bool moveBy(int dx, int dy) = 0;
    /// 1 left, 2 right, 3 middle; pressed and released.
    virtual bool click(int button) = 0;
    /// One notch of the wheel.
    virtual bool scroll(bool up) = 0;
};

} // namespace tavrel::platform
