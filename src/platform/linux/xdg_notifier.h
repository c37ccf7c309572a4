#pragma once

#include "platform/notifier.h"

#include <memory>

namespace tavrel::platform {

/// Messages through the service org.freedesktop.Notifications of the session bus.
///
/// Each message has a connection and a thread of its own, which nobody joins: a bus that hangs is never felt. The
/// service may be started by the bus for the first message.
class XdgNotifier final : public INotifier
{
public:
    XdgNotifier();
    ~XdgNotifier() override;

    void notify(const Notification &notification, std::function<void(bool shown)> done) override;

private:
    struct Answers;
    std::shared_ptr<Answers> m_answers;
};

} // namespace tavrel::platform
