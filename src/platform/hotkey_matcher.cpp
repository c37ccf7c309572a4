#include "platform/hotkey_matcher.h"

#include <algorithm>

namespace tavrel::platform {

HotkeyMatcher::Outcome HotkeyMatcher::press(KeyStroke stroke, quint32 timeMs, HotkeyPath path)
{
    if (isKnownPress(stroke.key, timeMs, path))
        return {.fired = {}, .swallowed = true};
    const auto pressedEnd = m_pressed.begin() + static_cast<std::ptrdiff_t>(m_pressedCount);
    if (std::find(m_pressed.begin(), pressedEnd, stroke.key) != pressedEnd)
        return {.fired = {}, .swallowed = true};

    const auto entry = std::find_if(m_table.begin(), m_table.end(),
                                    [&](const Entry &candidate) { return candidate.stroke == stroke; });
    if (entry == m_table.end())
        return {};

    if (m_pressedCount == kMaxPressed)
        removePressed(0);
    m_pressed[m_pressedCount++] = stroke.key;
    m_recent[m_nextRecent] = {.key = stroke.key, .timeMs = timeMs, .paths = static_cast<quint8>(path)};
    m_nextRecent = (m_nextRecent + 1) % m_recent.size();
    return {.fired = entry->id, .swallowed = true};
}

HotkeyMatcher::Outcome HotkeyMatcher::release(quint32 key)
{
    for (std::size_t i = 0; i < m_pressedCount; ++i) {
        if (m_pressed[i] != key)
            continue;
        removePressed(i);
        return {.fired = {}, .swallowed = true};
    }
    return {};
}

// A second report on a path that has already reported this press is another press within the same millisecond.
bool HotkeyMatcher::isKnownPress(quint32 key, quint32 timeMs, HotkeyPath path)
{
    const auto bit = static_cast<quint8>(path);
    for (Recent &recent : m_recent) {
        if (recent.paths == 0 || recent.key != key || recent.timeMs != timeMs || (recent.paths & bit) != 0)
            continue;
        recent.paths = static_cast<quint8>(recent.paths | bit);
        return true;
    }
    return false;
}

void HotkeyMatcher::removePressed(std::size_t index)
{
    std::move(m_pressed.begin() + static_cast<std::ptrdiff_t>(index) + 1,
              m_pressed.begin() + static_cast<std::ptrdiff_t>(m_pressedCount),
              m_pressed.begin() + static_cast<std::ptrdiff_t>(index));
    --m_pressedCount;
}

} // namespace tavrel::platform
