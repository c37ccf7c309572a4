#pragma once

#include "platform/hotkey_matcher.h"

#include <memory>
#include <vector>

struct xkb_keymap;
struct xkb_state;

namespace tavrel {
struct KeyCombo;
}

namespace tavrel::platform {

class XConnection;

struct XkbKeymapUnref
{
    void operator()(xkb_keymap *keymap) const noexcept;
};
struct XkbStateUnref
{
    void operator()(xkb_state *state) const noexcept;
};
using XkbKeymapPtr = std::unique_ptr<xkb_keymap, XkbKeymapUnref>;
using XkbStatePtr = std::unique_ptr<xkb_state, XkbStateUnref>;

/// Which of the eight X modifiers means what; as bits of the core protocol (Shift 1, Lock 2, Control 4, Mod1 8 …).
/// The defaults are those of every common keymap; 0 stands for "on no modifier".
struct XModifierRoles
{
    quint32 alt = 0x08;
    quint32 meta = 0x40;
    quint32 numLock = 0x10;
    quint32 scrollLock = 0;

    friend bool operator==(const XModifierRoles &, const XModifierRoles &) = default;
};

/// A snapshot of the server's keymap: finds the keys behind a combination.
///
/// A KeyStroke here is an X key code with the core modifier bits that must be held, locks left out.
class X11Keymap final
{
public:
    /// The keymap of the core keyboard now; null when the server did not tell it.
    [[nodiscard]] static std::unique_ptr<X11Keymap> fromServer(const XConnection &x, int keyboardId);
    X11Keymap(XkbKeymapPtr keymap, const XModifierRoles &roles);

    /// All strokes that are `combo` while layout `group` is active; empty when the keyboard has none.
    ///
    /// The key is looked up by the symbol that it makes, in the active layout first and in the other ones after it, so
    /// a Latin letter is found while a Cyrillic layout is active. A symbol that needs more modifiers than the combo
    /// names gets them added: Ctrl+? is Ctrl+Shift+/ on a US keyboard. Digits are the exception and mean their key on
    /// the digit row, also where the row makes digits only with Shift. Letters and digits that no layout has are taken
    /// from where a US keyboard has them, and F13 to F24 from their places too. Keys of the number pad are meant by
    /// no digit.
    [[nodiscard]] std::vector<KeyStroke> strokes(const KeyCombo &combo, quint32 group) const;

    /// Bits of the modifiers that only lock something and never tell hotkeys apart: Caps, Num and Scroll Lock.
    [[nodiscard]] quint32 lockModifiers() const noexcept { return m_lockModifiers; }
    /// Every combination of the lock modifiers, the empty one first.
    [[nodiscard]] std::vector<quint32> lockVariants() const;
    [[nodiscard]] const XModifierRoles &roles() const noexcept { return m_roles; }
    [[nodiscard]] xkb_keymap *xkb() const noexcept { return m_keymap.get(); }

private:
    XkbKeymapPtr m_keymap;
    XModifierRoles m_roles;
    quint32 m_lockModifiers;
};

} // namespace tavrel::platform
