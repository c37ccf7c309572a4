#pragma once

#include "base/answer.h"
#include "platform/input_collector.h"
#include "platform/input_monitor.h"
#include "platform/linux/screen_mapping.h"

#include <QByteArray>

#include <future>
#include <memory>
#include <thread>

namespace tavrel::platform {

/// Raw XInput 2 events of the whole desktop, heard on a thread and a connection of their own, whoever has the keyboard
/// or the pointer. Only the events that the mode needs are asked for. The modes count at the next start().
///
/// Raw events say that something moved, not where the pointer is: the place is asked of the server once for all events
/// that have come in together, and MotionResolver finds those in between. With clicks only no moves are heard, and a
/// click is where the pointer is when it is read. A key that is held at the start is not pressed anew by its
/// auto-repeat. Button numbers follow the pointer's mapping,
/// key names the active layout. Times are the server's, moved to the host clock.
class X11InputMonitor final : public IInputMonitor
{
    Q_OBJECT

public:
    /// `display` as in $DISPLAY, empty for $DISPLAY itself.
    explicit X11InputMonitor(const QByteArray &display = {}, QObject *parent = nullptr);
    ~X11InputMonitor() override;

    bool hasAccess(QString *error) override;
    void requestAccess() override {}
    void setClicksOnly(bool clicksOnly) override { m_mode.clicksOnly = clicksOnly; }
    void setKeysWithClicks(bool keys) override { m_mode.keysWithClicks = keys; }
    bool start(QString *error) override;
    QList<InputEventRecord> stop() override;
    [[nodiscard]] bool isRunning() const override { return m_thread.joinable(); }

private:
    class Listener;

    const QByteArray m_display;
    DisplayWatch m_displays;
    InputCollector::Mode m_mode;
    InputCollector m_collector;
    std::unique_ptr<Listener> m_listener;
    Answers m_answers;
    std::thread m_thread;      ///< joined by stop(), which cuts off its connection when it does not end
    std::future<void> m_ended; ///< of the thread
};

} // namespace tavrel::platform
