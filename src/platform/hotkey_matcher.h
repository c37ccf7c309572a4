#pragma once

#include <QtGlobal>

#include <array>
#include <optional>
#include <vector>

namespace tavrel::platform {

/// A key of the system with the modifiers that go with it. Both are the system's own numbers; to the matcher they only
/// have to compare.
struct KeyStroke
{
    quint32 key = 0;
    quint32 modifiers = 0;

    friend constexpr auto operator<=>(const KeyStroke &, const KeyStroke &) noexcept = default;
};

/// The ways on which a system may report one and the same press.
enum class HotkeyPath : quint8 {
    Listener = 1, ///< hears every key, whoever has the keyboard
    Grab = 2,     ///< hears the grabbed combinations only, and keeps them from everyone else
};

/// Decides which key events are hotkeys.
///
/// A press fires when its key and exactly its modifiers are in the table, once until its release. A press that several
/// paths report fires for the first of them: two reports of different paths are the same press when key and time are
/// equal, however late the second one comes. Allocates nothing while matching. Not thread-safe.
class HotkeyMatcher final
{
public:
    /// Keys that are down and have fired; with one more the oldest is forgotten.
    static constexpr std::size_t kMaxPressed = 16;

    struct Entry
    {
        int id = 0;
        KeyStroke stroke;

        friend bool operator==(const Entry &, const Entry &) = default;
    };

    struct Outcome
    {
        std::optional<int> fired; ///< the id whose combination was pressed
        bool swallowed = false;   ///< the event belongs to a hotkey and is nobody else's
    };

    /// Replaces the table; of equal strokes the first one fires. Keys that are down stay known, so a held key does
    /// not fire under its new meaning.
    void setTable(std::vector<Entry> table) { m_table = std::move(table); }
    [[nodiscard]] const std::vector<Entry> &table() const noexcept { return m_table; }

    /// `timeMs` is the system's stamp of the press, the same on all paths.
    Outcome press(KeyStroke stroke, quint32 timeMs, HotkeyPath path);
    /// The release may come on any path, since a system may tell the press on one and the release on the other.
    Outcome release(quint32 key);

    [[nodiscard]] bool hasPressed() const noexcept { return m_pressedCount > 0; }
    /// Forgets the pressed keys that are not down according to `isDown`: repairs a release that was never reported.
    template <typename Predicate>
    void keepPressed(Predicate isDown)
    {
        for (std::size_t i = m_pressedCount; i-- > 0;) {
            if (!isDown(m_pressed[i]))
                removePressed(i);
        }
    }

private:
    struct Recent
    {
        quint32 key = 0;
        quint32 timeMs = 0;
        quint8 paths = 0; ///< bits of HotkeyPath that have reported this press
    };

    [[nodiscard]] bool isKnownPress(quint32 key, quint32 timeMs, HotkeyPath path);
    void removePressed(std::size_t index);

    std::vector<Entry> m_table;
    std::array<quint32, kMaxPressed> m_pressed{}; ///< keys, oldest first
    std::size_t m_pressedCount = 0;
    std::array<Recent, kMaxPressed> m_recent; ///< a ring of the last presses that fired
    std::size_t m_nextRecent = 0;
};

} // namespace tavrel::platform
