#pragma once

#include "base/answer.h"
#include "platform/notifier.h"

namespace tavrel::platform {

/// Messages through the service org.freedesktop.Notifications of the session bus.
///
/// Each message has a connection and a thread of its own, which nobody joins: a bus that hangs is never felt. The
/// service may be started by the bus for the first message.
class XdgNotifier final : public INotifier
{
public:
    void notify(const Notification &notification, std::function<void(bool shown)> done) override;

private:
    Answers m_answers;
};

} // namespace tavrel::platform
