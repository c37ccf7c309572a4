#include "platform/linux/bus_client.h"

#include <QFile>
#include <QHash>

#include <dbus/dbus.h>

#include <utility>

namespace tavrel::platform {

namespace {

/// Buses limit how many calls of one connection may be without an answer; 128 is the least that is usual.
constexpr qsizetype kInFlight = 100;

/// The entries of an address list that are plain sockets.
QByteArray socketAddresses(const QByteArray &address)
{
    QList<QByteArray> entries = address.split(';');
    entries.removeIf([](const QByteArray &entry) { return !entry.startsWith("unix:"); });
    return entries.join(';');
}

} // namespace

void BusMessageUnref::operator()(DBusMessage *message) const noexcept
{
    dbus_message_unref(message);
}

/// What callAll() waits for.
struct BusClient::Replies
{
    QHash<quint32, std::size_t> waiting; ///< by serial
    std::vector<BusMessage> messages;
};

BusClient::BusClient(DBusConnection *connection) : m_connection(connection) {}

BusClient::~BusClient()
{
    dbus_connection_close(m_connection);
    dbus_connection_unref(m_connection);
}

std::unique_ptr<BusClient> BusClient::open(const QByteArray &address, QDeadlineTimer deadline)
{
    const QByteArray sockets = socketAddresses(address);
    if (sockets.isEmpty())
        return nullptr;
    DBusConnection *connection = dbus_connection_open_private(sockets.constData(), nullptr);
    if (!connection)
        return nullptr;
    dbus_connection_set_exit_on_disconnect(connection, 0);
    std::unique_ptr<BusClient> client(new BusClient(connection));

    std::vector<BusMessage> calls;
    calls.push_back(busCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "Hello"));
    calls.push_back(busCall(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "AddMatch"));
    const char *rule = "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                       "member='NameOwnerChanged'";
    dbus_message_append_args(calls.back().get(), DBUS_TYPE_STRING, &rule, DBUS_TYPE_INVALID);
    const std::vector<BusMessage> replies = client->callAll(std::move(calls), deadline);
    return replies.front() ? std::move(client) : nullptr;
}

std::vector<BusMessage> BusClient::callAll(std::vector<BusMessage> calls, QDeadlineTimer deadline)
{
    Replies replies;
    replies.messages.resize(calls.size());
    std::size_t sent = 0;
    bool open = true;
    while (true) {
        for (; sent < calls.size() && replies.waiting.size() < kInFlight; ++sent) {
            dbus_uint32_t serial = 0;
            if (calls[sent] && dbus_connection_send(m_connection, calls[sent].get(), &serial))
                replies.waiting.insert(serial, sent);
        }
        if (!open || replies.waiting.isEmpty() || deadline.hasExpired())
            break;
        open = dbus_connection_read_write(m_connection, static_cast<int>(deadline.remainingTime()));
        takeIncoming(replies);
    }
    return std::move(replies.messages);
}

BusMessage BusClient::call(BusMessage message, QDeadlineTimer deadline)
{
    std::vector<BusMessage> calls;
    calls.push_back(std::move(message));
    return std::move(callAll(std::move(calls), deadline).front());
}

void BusClient::takeIncoming(Replies &replies)
{
    while (BusMessage message{dbus_connection_pop_message(m_connection)}) {
        const auto waiting = replies.waiting.constFind(dbus_message_get_reply_serial(message.get()));
        if (waiting != replies.waiting.cend()) {
            if (dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_METHOD_RETURN)
                replies.messages[*waiting] = std::move(message);
            replies.waiting.erase(waiting);
        } else if (dbus_message_is_signal(message.get(), DBUS_INTERFACE_DBUS, "NameOwnerChanged")) {
            const char *name = nullptr;
            const char *before = nullptr;
            const char *after = nullptr;
            if (dbus_message_get_args(message.get(), nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                                      DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) &&
                *after == '\0')
                m_vanished.append(name);
        }
    }
}

bool BusClient::isOpen() const
{
    return dbus_connection_get_is_connected(m_connection);
}

QList<QByteArray> BusClient::takeVanished()
{
    return std::exchange(m_vanished, {});
}

BusMessage busCall(const QByteArray &destination, const QByteArray &path, const char *interface, const char *method)
{
    return BusMessage(dbus_message_new_method_call(destination.constData(), path.constData(), interface, method));
}

BusMessage busPropertyCall(const QByteArray &destination, const QByteArray &path, const char *interface,
                           const char *property)
{
    BusMessage message = busCall(destination, path, DBUS_INTERFACE_PROPERTIES, "Get");
    if (message)
        dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING, &property,
                                 DBUS_TYPE_INVALID);
    return message;
}

QByteArray sessionBusAddress()
{
    const QByteArray named = socketAddresses(qgetenv("DBUS_SESSION_BUS_ADDRESS"));
    if (!named.isEmpty())
        return named;
    // Where user sessions have their bus even for programs that were started without its address.
    const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    if (!socket.startsWith('/') || !QFile::exists(QFile::decodeName(socket)))
        return {};
    const std::unique_ptr<char, decltype(&dbus_free)> escaped(dbus_address_escape_value(socket.constData()), dbus_free);
    return escaped ? QByteArray("unix:path=") + escaped.get() : QByteArray();
}

} // namespace tavrel::platform
