#include "platform/linux/accessibility_bus.h"

#include "base/unjoined_thread.h"
#include "base/wait_until.h"

#include <QElapsedTimer>
#include <QThreadPool>

#include <dbus/dbus.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace tavrel::platform {

namespace {

using namespace std::chrono_literals;

constexpr auto kOpening = 5s; // the bus may have to be started first
constexpr auto kAsking = 1s;
constexpr qint64 kPatience = 250;     // milliseconds, with a bus that is coming up
constexpr qint64 kLookAgain = 10'000; // milliseconds

constexpr const char *kBusName = "org.a11y.Bus";
constexpr const char *kBusPath = "/org/a11y/bus";

QByteArray accessibilityBusAddress(QDeadlineTimer deadline)
{
    const QByteArray named = qgetenv("AT_SPI_BUS_ADDRESS");
    if (!named.isEmpty())
        return named;
    const auto session = BusClient::open(sessionBusAddress(), deadline);
    if (!session)
        return {};
    const BusMessage reply = session->call(busCall(kBusName, kBusPath, kBusName, "GetAddress"), deadline);
    const char *address = nullptr;
    if (!reply || !dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_STRING, &address, DBUS_TYPE_INVALID))
        return {};
    return address;
}

} // namespace

struct AccessibilityBus::Shared
{
    enum class State { Unknown, Opening, Absent, Open };

    std::mutex mutex;
    std::condition_variable changed;
    // All below under the mutex, but for the session while it is lent.
    State state = State::Unknown;
    QElapsedTimer since; ///< of the state
    bool lent = false;
    Session session;

    void set(State next)
    {
        state = next;
        since.start();
        changed.notify_all();
    }

    /// The state by the deadline; has the bus looked for when it is time to.
    static State settle(const std::shared_ptr<Shared> &shared, std::unique_lock<std::mutex> &lock,
                        QDeadlineTimer deadline);
};

AccessibilityBus::Shared::State AccessibilityBus::Shared::settle(const std::shared_ptr<Shared> &shared,
                                                                 std::unique_lock<std::mutex> &lock,
                                                                 QDeadlineTimer deadline)
{
    const bool again = shared->state == State::Absent && shared->since.hasExpired(kLookAgain);
    const bool begins = shared->state == State::Unknown || again;
    if (begins) {
        shared->set(State::Opening);
        // Connecting to a socket whose owner is stopped may never return.
        const bool isRunning = runUnjoined([shared] {
            const QDeadlineTimer giveUp(kOpening);
            auto client = BusClient::open(accessibilityBusAddress(giveUp), giveUp);
            const std::scoped_lock done(shared->mutex);
            shared->session = Session{std::move(client), {}};
            shared->set(shared->session.client ? State::Open : State::Absent);
        });
        if (!isRunning)
            shared->set(State::Absent);
    }
    if (!begins)
        deadline = std::min(deadline, QDeadlineTimer(std::max<qint64>(0, kPatience - shared->since.elapsed())));
    if (shared->state == State::Opening)
        waitUntil(shared->changed, lock, deadline, [&shared] { return shared->state != State::Opening; });
    return shared->state;
}

AccessibilityBus::AccessibilityBus() : m_shared(std::make_shared<Shared>()) {}

AccessibilityBus::~AccessibilityBus() = default;

bool AccessibilityBus::withSession(QDeadlineTimer deadline, const std::function<void(Session &)> &use) const
{
    {
        std::unique_lock lock(m_shared->mutex);
        const auto free = [this] { return !m_shared->lent; };
        if (Shared::settle(m_shared, lock, deadline) != Shared::State::Open ||
            !waitUntil(m_shared->changed, lock, deadline, free) || m_shared->state != Shared::State::Open)
            return false;
        m_shared->lent = true;
    }
    Session &session = m_shared->session;
    use(session);

    const std::scoped_lock lock(m_shared->mutex);
    m_shared->lent = false;
    if (session.client->isOpen()) {
        m_shared->changed.notify_all();
    } else {
        session = {};
        m_shared->set(Shared::State::Unknown);
    }
    return true;
}

bool AccessibilityBus::isThere(QDeadlineTimer deadline) const
{
    const bool mayWait = !deadline.hasExpired();
    std::unique_lock lock(m_shared->mutex);
    const Shared::State state = Shared::settle(m_shared, lock, deadline);
    return state == Shared::State::Open ||
           (state == Shared::State::Opening && !mayWait && !m_shared->since.hasExpired(kPatience));
}

void askForAccessibility()
{
    QThreadPool::globalInstance()->start([] {
        const QDeadlineTimer deadline(kAsking);
        const auto session = BusClient::open(sessionBusAddress(), deadline);
        if (!session)
            return;
        BusMessage message = busCall(kBusName, kBusPath, DBUS_INTERFACE_PROPERTIES, "Set");
        const char *interface = "org.a11y.Status";
        const char *property = "IsEnabled";
        const dbus_bool_t on = 1;
        DBusMessageIter arguments;
        DBusMessageIter value;
        dbus_message_iter_init_append(message.get(), &arguments);
        if (dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &interface) &&
            dbus_message_iter_append_basic(&arguments, DBUS_TYPE_STRING, &property) &&
            dbus_message_iter_open_container(&arguments, DBUS_TYPE_VARIANT, DBUS_TYPE_BOOLEAN_AS_STRING, &value) &&
            dbus_message_iter_append_basic(&value, DBUS_TYPE_BOOLEAN, &on) &&
            dbus_message_iter_close_container(&arguments, &value))
            static_cast<void>(session->call(std::move(message), deadline));
    });
}

} // namespace tavrel::platform
