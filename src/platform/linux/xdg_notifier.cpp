#include "platform/linux/xdg_notifier.h"

#include "base/unjoined_thread.h"
#include "platform/linux/bus_client.h"

#include <dbus/dbus.h>

#include <utility>

namespace tavrel::platform {
namespace {

constexpr qint64 kPatienceMs = 3000; ///< the service may have to be started first

constexpr const char *kService = "org.freedesktop.Notifications";
constexpr const char *kPath = "/org/freedesktop/Notifications";

bool append(DBusMessageIter &to, int type, const void *value)
{
    return dbus_message_iter_append_basic(&to, type, value);
}

bool appendHint(DBusMessageIter &hints, const char *name, int type, const char *signature, const void *value)
{
    DBusMessageIter entry;
    DBusMessageIter variant;
    return dbus_message_iter_open_container(&hints, DBUS_TYPE_DICT_ENTRY, nullptr, &entry) &&
           append(entry, DBUS_TYPE_STRING, &name) &&
           dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, signature, &variant) &&
           append(variant, type, value) && dbus_message_iter_close_container(&entry, &variant) &&
           dbus_message_iter_close_container(&hints, &entry);
}

/// Whether the service reads the body as markup; without an answer it is taken not to.
bool readsMarkup(BusClient &bus, QDeadlineTimer deadline)
{
    const BusMessage reply = bus.call(busCall(kService, kPath, kService, "GetCapabilities"), deadline);
    char **words = nullptr;
    int count = 0;
    if (!reply || !dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING, &words, &count,
                                         DBUS_TYPE_INVALID))
        return false;
    bool found = false;
    for (int i = 0; i < count; ++i)
        found = found || QByteArray(words[i]) == "body-markup";
    dbus_free_string_array(words);
    return found;
}

BusMessage notifyCall(const Notification &notification, bool markup)
{
    BusMessage call = busCall(kService, kPath, kService, "Notify");
    const QByteArray title = notification.title.toUtf8();
    const QByteArray body = (markup ? notification.text.toHtmlEscaped() : notification.text).toUtf8();
    const char *program = "Tavrel";
    const char *icon = notification.isWarning ? "dialog-warning" : "tavrel";
    const char *titleText = title.constData();
    const char *bodyText = body.constData();
    const dbus_uint32_t replaces = 0;
    const auto expires = static_cast<dbus_int32_t>(notification.duration.count());
    const unsigned char urgency = 1; // a critical one would stay until somebody puts it away
    const char *desktopEntry = "tavrel";
    DBusMessageIter arguments;
    DBusMessageIter list;
    if (!call)
        return nullptr;
    dbus_message_iter_init_append(call.get(), &arguments);
    const bool complete =
        append(arguments, DBUS_TYPE_STRING, &program) && append(arguments, DBUS_TYPE_UINT32, &replaces) &&
        append(arguments, DBUS_TYPE_STRING, &icon) && append(arguments, DBUS_TYPE_STRING, &titleText) &&
        append(arguments, DBUS_TYPE_STRING, &bodyText) &&
        dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "s", &list) && // no buttons
        dbus_message_iter_close_container(&arguments, &list) &&
        dbus_message_iter_open_container(&arguments, DBUS_TYPE_ARRAY, "{sv}", &list) &&
        appendHint(list, "urgency", DBUS_TYPE_BYTE, "y", &urgency) &&
        appendHint(list, "desktop-entry", DBUS_TYPE_STRING, "s", &desktopEntry) &&
        dbus_message_iter_close_container(&arguments, &list) && append(arguments, DBUS_TYPE_INT32, &expires);
    return complete ? std::move(call) : nullptr;
}

bool send(const Notification &notification)
{
    const QDeadlineTimer deadline(kPatienceMs);
    const auto bus = BusClient::open(sessionBusAddress(), deadline);
    if (!bus)
        return false;
    BusMessage call = notifyCall(notification, readsMarkup(*bus, deadline));
    return call && bus->call(std::move(call), deadline) != nullptr;
}

} // namespace

void XdgNotifier::notify(const Notification &notification, std::function<void(bool)> done)
{
    const bool isSent = runUnjoined([notification, done, answer = m_answers.handle()] {
        const bool shown = send(notification);
        answer.post([done, shown] { done(shown); });
    });
    if (!isSent)
        done(false);
}

} // namespace tavrel::platform
