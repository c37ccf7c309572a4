#pragma once

#include "platform/input_monitor.h"

#include <QList>
#include <QPoint>
#include <QSet>

#include <mutex>
#include <optional>

namespace tavrel::platform {

/// Decides which input events a monitor keeps and which it tells of; the same on every system.
///
/// add() belongs to the thread that hears the events, take() to any other one.
class InputCollector final
{
public:
    struct Mode
    {
        bool clicksOnly = false;     ///< only buttons are told, and nothing is kept
        bool keysWithClicks = false; ///< with clicksOnly: key presses are told as well

        /// Whether events of the keyboard are needed at all.
        [[nodiscard]] bool needsKeys() const { return !clicksOnly || keysWithClicks; }
        friend bool operator==(const Mode &, const Mode &) = default;
    };

    /// Forgets everything; from now on in this mode.
    void begin(Mode mode);
    /// Takes an event in. Moves within one pixel and auto-repeat are dropped.
    ///
    /// returns  whether the event is to be told
    [[nodiscard]] bool add(const InputEventRecord &event);
    /// What was kept since begin(), in order; moves have whole coordinates.
    [[nodiscard]] QList<InputEventRecord> take();

private:
    Mode m_mode;
    QSet<int> m_pressed;              ///< key codes that are down
    std::optional<QPoint> m_position; ///< of the last move
    std::mutex m_mutex;               ///< guards what follows
    QList<InputEventRecord> m_events;
};

} // namespace tavrel::platform
