#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>

#include <memory>
#include <vector>

struct DBusConnection;
struct DBusMessage;

namespace tavrel::platform {

struct BusMessageUnref
{
    void operator()(DBusMessage *message) const noexcept;
};
using BusMessage = std::unique_ptr<DBusMessage, BusMessageUnref>;

/// A connection of its own to a message bus, for calls that are sent together and collected up to a deadline.
///
/// It has no background activity at all: nothing is read but inside callAll(). Replies that come after their deadline
/// are dropped by a later call. One thread at a time, whichever it is.
class BusClient final
{
public:
    /// Connects and says hello.
    ///
    /// address   as D-Bus writes them; only its "unix:" entries are tried, since the others start programs or look up
    ///           names, which nothing can bound in time
    /// returns   null when there is no such bus or it has not answered in time. connect() itself has no time limit: a
    ///           bus that is stopped with its queue full keeps the caller for good.
    [[nodiscard]] static std::unique_ptr<BusClient> open(const QByteArray &address, QDeadlineTimer deadline);
    ~BusClient();
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;

    /// Sends all calls, many at a time, and collects what is answered before the deadline.
    ///
    /// returns  one entry per call, in their order: the reply, null for an error or no answer
    [[nodiscard]] std::vector<BusMessage> callAll(std::vector<BusMessage> calls, QDeadlineTimer deadline);
    [[nodiscard]] BusMessage call(BusMessage message, QDeadlineTimer deadline);

    /// False once the bus has hung up.
    [[nodiscard]] bool isOpen() const;
    /// Unique names that have left the bus since the last time.
    [[nodiscard]] QList<QByteArray> takeVanished();

private:
    struct Replies;

    explicit BusClient(DBusConnection *connection);
    void takeIncoming(Replies &replies);

    DBusConnection *m_connection;
    QList<QByteArray> m_vanished;
};

/// A method call; null when memory is out. `destination` and `path` have to be valid.
[[nodiscard]] BusMessage busCall(const QByteArray &destination, const QByteArray &path, const char *interface,
                                 const char *method);
/// org.freedesktop.DBus.Properties.Get
[[nodiscard]] BusMessage busPropertyCall(const QByteArray &destination, const QByteArray &path, const char *interface,
                                         const char *property);

/// Where the session bus listens; empty when there is none. Never starts one.
[[nodiscard]] QByteArray sessionBusAddress();

} // namespace tavrel::platform
