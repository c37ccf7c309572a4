#pragma once

#include "platform/x_probe.h"

#include <QList>

namespace tavrel::test {

/// Another program on the same X server, with a keyboard at hand: types through XTEST, grabs keys, has a focused
/// window. Every function returns when the server has done what was asked.
class ForeignXClient : public XProbe
{
public:
    enum class GrabKind { Core, XInput };

    ForeignXClient();

    void keyDown(xcb_keycode_t key);
    void keyUp(xcb_keycode_t key);
    void stroke(xcb_keycode_t key);

    /// Passive grab of one stroke on the root, with exactly these modifiers. False when somebody else has it.
    bool grabKey(GrabKind kind, xcb_keycode_t key, quint32 modifiers);
    void ungrabKey(GrabKind kind, xcb_keycode_t key, quint32 modifiers);
    /// Takes keyboard and pointer, as an open menu does. A frozen keyboard is one whose events wait until
    /// releaseEverything().
    bool takeKeyboardAndPointer(bool frozen);
    void releaseEverything();
    /// With true the server answers nobody else.
    void setServerGrabbed(bool grabbed);

    /// Gives the keyboard focus to a window of this client.
    bool focusOwnWindow();
    /// The key codes that went down in the window since the last call; includes auto-repeat.
    [[nodiscard]] QList<int> takeKeysOfWindow();

    /// Exchanges what two keys make.
    void swapKeys(xcb_keycode_t one, xcb_keycode_t other);
    /// Makes the keys of one modifier (0 Shift to 7 Mod5) those of another, and the other way round.
    bool swapModifiers(int one, int other);
    void lockGroup(int group);
    /// Locks exactly these modifiers, as their lock keys would.
    void lockModifiers(quint32 modifiers);
    /// Auto-repeat of the whole keyboard, in milliseconds.
    void setAutoRepeat(quint16 delay, quint16 interval);
    [[nodiscard]] quint32 modifierState() const;

private:
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

} // namespace tavrel::test
