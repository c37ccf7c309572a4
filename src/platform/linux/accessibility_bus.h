#pragma once

#include "platform/linux/bus_client.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>

#include <functional>
#include <memory>

namespace tavrel::platform {

/// The way to the accessibility bus: found and connected once, on a thread of its own, and lent to one query at a time.
///
/// Finding the bus may start it, and a session bus that is stopped never answers; a query waits for neither beyond its
/// deadline, and for a connection that has been coming up for longer than a whole query not at all. Without a bus it
/// is looked for again after some seconds, and after a lost connection with the next query. All functions: any thread.
class AccessibilityBus final
{
public:
    /// A connection with what is remembered for as long as it stands.
    struct Session
    {
        std::unique_ptr<BusClient> client;
        QHash<QByteArray, qint64> processIds; ///< of the unique names on the bus
    };

    AccessibilityBus();
    ~AccessibilityBus();
    AccessibilityBus(const AccessibilityBus &) = delete;
    AccessibilityBus &operator=(const AccessibilityBus &) = delete;

    /// Calls `use` with the session as its only user. False, without the call, when there is no bus or it did not come
    /// up or become free in time.
    bool withSession(QDeadlineTimer deadline, const std::function<void(Session &)> &use) const;
    /// Whether the bus is connected by the deadline. To a caller who cannot wait, with a deadline that has expired, a
    /// bus that has just begun to be looked for counts as there: a query then finds out.
    [[nodiscard]] bool isThere(QDeadlineTimer deadline) const;

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
};

/// Tells all applications of the session, through the session bus, that their elements are wanted. Returns at once; the
/// global thread pool does it, which a process that ends waits for.
void askForAccessibility();

} // namespace tavrel::platform
