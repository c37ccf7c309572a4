#pragma once

#include <QKeySequence>
#include <QString>

class QKeyEvent;

namespace tavrel {

/// A key combination: one key and four exact modifiers. A combo without a key is invalid.
struct KeyCombo
{
    static constexpr int kUnknownKey = 0x1ffffff; ///< Qt::Key_unknown

    int key = kUnknownKey; ///< Qt key code after normalizeKey()
    bool ctrl = false;
    bool shift = false;
    bool alt = false;
    bool meta = false; ///< the Windows or Super key

    [[nodiscard]] constexpr bool isValid() const noexcept { return key != kUnknownKey; }
    [[nodiscard]] constexpr bool hasModifier() const noexcept { return ctrl || shift || alt || meta; }
    friend constexpr bool operator==(const KeyCombo &, const KeyCombo &) noexcept = default;

    /// Invalid for a press of a modifier key alone.
    [[nodiscard]] static KeyCombo fromEvent(const QKeyEvent &event);
    /// Reads `ctrl+shift+49`; anything else gives the invalid combo.
    [[nodiscard]] static KeyCombo fromJsonText(const QString &text);

    [[nodiscard]] QString toJsonText() const;    ///< `ctrl+shift+49`, empty when invalid
    [[nodiscard]] QString toDisplayText() const; ///< `Ctrl+Shift+1`
    [[nodiscard]] QKeySequence toKeySequence() const;
};

/// A combination that can be switched off without being forgotten.
struct HotkeyBinding
{
    bool enabled = true;
    KeyCombo combo;

    [[nodiscard]] constexpr bool isActive() const noexcept { return enabled && combo.isValid(); }
    friend constexpr bool operator==(const HotkeyBinding &, const HotkeyBinding &) noexcept = default;
};

/// Maps the keys that a Chinese input method produces to those of the same key without it, so that a combination
/// taken under either equals the other. Codes below 128 and from 0x10000 up pass unchanged.
[[nodiscard]] int normalizeKey(int key, bool shift);

/// Whether a global hotkey may consist of this combo: it needs a modifier, unless its key is F1 to F35.
[[nodiscard]] bool isGlobalHotkeyCombo(const KeyCombo &combo);

} // namespace tavrel
