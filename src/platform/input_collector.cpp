#include "platform/input_collector.h"

#include <utility>

namespace tavrel::platform {

void InputCollector::begin(Mode mode)
{
    m_mode = mode;
    m_pressed.clear();
    m_position.reset();
    const std::scoped_lock lock(m_mutex);
    m_events.clear();
}

bool InputCollector::add(const InputEventRecord &event)
{
    using Type = InputEventRecord::Type;
    InputEventRecord kept = event;
    switch (event.type) {
    case Type::Move: {
        const QPoint position(qRound(event.x), qRound(event.y));
        if (m_mode.clicksOnly || m_position == position)
            return false;
        m_position = position;
        kept.x = position.x();
        kept.y = position.y();
        break;
    }
    case Type::KeyDown:
        if (!m_mode.needsKeys() || m_pressed.contains(event.virtualKey))
            return false;
        m_pressed.insert(event.virtualKey);
        break;
    case Type::KeyUp:
        m_pressed.remove(event.virtualKey);
        if (m_mode.clicksOnly)
            return false;
        break;
    case Type::Wheel:
        if (m_mode.clicksOnly)
            return false;
        break;
    default:
        break;
    }
    if (!m_mode.clicksOnly) {
        const std::scoped_lock lock(m_mutex);
        m_events.append(std::move(kept));
    }
    return event.type != Type::Move && event.type != Type::Wheel;
}

QList<InputEventRecord> InputCollector::take()
{
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_events, {});
}

} // namespace tavrel::platform
