#pragma once

#include "platform/linux/x11_keymap.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

// The header has a field of this name.
#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit

#include <memory>

namespace tavrel::platform {

class XConnection;

/// Selects XInput events of all master devices on the root. False when the server has no XInput 2.1, from which on raw
/// events reach everyone, also during a grab. `mask` has the bits of xcb_input_xi_event_mask_t.
[[nodiscard]] bool selectRootInput(const XConnection &x, quint32 mask);

/// The core keyboard as one connection sees it: its keymap, which modifiers are held, which layout is active. It
/// follows the events of that connection, whose owner passes them on. One thread.
class X11Keyboard final
{
public:
    enum class Change { None, Layout, Keymap };

    /// Null when the server has no XKB or does not tell its keymap.
    [[nodiscard]] static std::unique_ptr<X11Keyboard> attach(const XConnection &x);

    /// After Change::Keymap the owner calls reread() when it has taken all events in. Change::Layout means that
    /// another layout is active.
    [[nodiscard]] Change handleEvent(const xcb_generic_event_t &event);
    /// Reads the keymap anew; which modifiers are held stays as the events have told. False leaves all as it was.
    [[nodiscard]] bool reread();
    /// A raw event of a key.
    void moveKey(xcb_keycode_t key, bool down);
    /// What the server says is held, in case an event was missed.
    void setState(const xcb_xkb_get_state_reply_t &state);

    [[nodiscard]] int deviceId() const noexcept { return m_deviceId; }
    [[nodiscard]] const X11Keymap &keymap() const noexcept { return *m_keymap; }
    [[nodiscard]] quint32 layout() const noexcept { return m_layout; }
    /// Bits of the core protocol, locks left out.
    [[nodiscard]] quint32 heldModifiers() const;
    [[nodiscard]] xkb_state *xkb() const noexcept { return m_state.get(); }

private:
    X11Keyboard(const XConnection &x, quint8 firstEvent);

    const XConnection &m_x;
    const quint8 m_firstEvent;
    const int m_deviceId;
    std::unique_ptr<X11Keymap> m_keymap;
    XkbStatePtr m_state; ///< follows the raw events, so it knows of modifiers while another program has the keys
    quint32 m_layout = 0;
};

} // namespace tavrel::platform
