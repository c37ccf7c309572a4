#include "platform/linux/x_connection.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QStringDecoder>

#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>

#include <array>
#include <csignal>
#include <string>

namespace tavrel::platform {

namespace {

Q_LOGGING_CATEGORY(lcX, "tavrel.x11")

// In the order of XAtom; the compositor selection gets the screen's number behind its name.
constexpr std::array kAtomNames{
    "_NET_ACTIVE_WINDOW",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_FRAME_EXTENTS",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_WM_ICON",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_SKIP_PAGER",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_USER_TIME",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DND",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_GTK_FRAME_EXTENTS",
    "WM_STATE",
    "_XROOTPMAP_ID",
    "ESETROOT_PMAP_ID",
    "_NET_WM_CM_S",
    "UTF8_STRING",
    "_TAVREL_TIMESTAMP",
};
static_assert(kAtomNames.size() == static_cast<std::size_t>(XAtom::Count));

/// A write to a server that is gone raises SIGPIPE, which ends the process unless somebody has an opinion on it.
void ignoreBrokenPipes()
{
    struct sigaction current = {};
    if (sigaction(SIGPIPE, nullptr, &current) == 0 && current.sa_handler == SIG_DFL) {
        current.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &current, nullptr);
    }
}

/// At least the given version.
bool reaches(quint32 major, quint32 minor, quint32 wantedMajor, quint32 wantedMinor)
{
    return major > wantedMajor || (major == wantedMajor && minor >= wantedMinor);
}

} // namespace

std::unique_ptr<XConnection> XConnection::create(QString *error, const QByteArray &display)
{
    ignoreBrokenPipes();
    int screenNumber = 0;
    xcb_connection_t *connection = xcb_connect(display.isEmpty() ? nullptr : display.constData(), &screenNumber);
    // A failed connection is an object too; it has to be disconnected like a working one.
    std::unique_ptr<XConnection> made(new XConnection(connection, screenNumber));
    if (!made->m_screen) {
        const QString text =
            made->isBroken() ? made->brokenText() : QStringLiteral("X 服务器没有编号为 %1 的屏幕").arg(screenNumber);
        qCWarning(lcX).noquote() << QStringLiteral("无法连接 X 服务器：%1").arg(text);
        if (error)
            *error = text;
        return nullptr;
    }
    return made;
}

XConnection::XConnection(xcb_connection_t *connection, int screenNumber) : m_connection(connection)
{
    if (isBroken())
        return;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; screens.rem > 0; xcb_screen_next(&screens), ++i) {
        if (i == screenNumber)
            m_screen = screens.data;
    }
    if (m_screen)
        fetchAtomsAndExtensions(screenNumber);
}

XConnection::~XConnection()
{
    xcb_disconnect(m_connection);
}

void XConnection::fetchAtomsAndExtensions(int screenNumber)
{
    xcb_connection_t *c = m_connection;
    for (xcb_extension_t *extension :
         {&xcb_composite_id, &xcb_randr_id, &xcb_render_id, &xcb_shape_id, &xcb_shm_id, &xcb_xfixes_id})
        xcb_prefetch_extension_data(c, extension);
    std::array<xcb_intern_atom_cookie_t, kAtomNames.size()> cookies;
    for (std::size_t i = 0; i < kAtomNames.size(); ++i) {
        std::string name = kAtomNames[i];
        if (i == static_cast<std::size_t>(XAtom::CompositeManager))
            name += std::to_string(screenNumber);
        cookies[i] = xcb_intern_atom(c, 0, static_cast<quint16>(name.size()), name.data());
    }
    for (std::size_t i = 0; i < kAtomNames.size(); ++i) {
        if (const XReply<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(c, cookies[i], nullptr)})
            m_atoms[i] = reply->atom;
    }

    // Asking for the version is also what makes the server speak it to this client.
    const auto present = [c](xcb_extension_t *extension) {
        const xcb_query_extension_reply_t *data = xcb_get_extension_data(c, extension);
        return data && data->present;
    };
    if (present(&xcb_randr_id)) {
        const XReply<xcb_randr_query_version_reply_t> reply{
            xcb_randr_query_version_reply(c, xcb_randr_query_version(c, 1, 5), nullptr)};
        m_extensions.randrMonitors = reply && reaches(reply->major_version, reply->minor_version, 1, 5);
    }
    if (present(&xcb_shm_id)) {
        const XReply<xcb_shm_query_version_reply_t> reply{
            xcb_shm_query_version_reply(c, xcb_shm_query_version(c), nullptr)};
        m_extensions.shmDescriptors = reply && reaches(reply->major_version, reply->minor_version, 1, 2);
        m_extensions.shmPixmaps = reply && reply->shared_pixmaps && reply->pixmap_format == XCB_IMAGE_FORMAT_Z_PIXMAP;
    }
    if (present(&xcb_xfixes_id)) {
        const XReply<xcb_xfixes_query_version_reply_t> reply{
            xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 5, 0), nullptr)};
        m_extensions.fixes = reply && reaches(reply->major_version, reply->minor_version, 5, 0);
    }
    if (present(&xcb_composite_id)) {
        const XReply<xcb_composite_query_version_reply_t> reply{
            xcb_composite_query_version_reply(c, xcb_composite_query_version(c, 0, 4), nullptr)};
        m_extensions.composite =
            reply && m_extensions.fixes && reaches(reply->major_version, reply->minor_version, 0, 4);
    }
    if (present(&xcb_render_id)) {
        const XReply<xcb_render_query_version_reply_t> reply{
            xcb_render_query_version_reply(c, xcb_render_query_version(c, 0, 11), nullptr)};
        m_extensions.render = static_cast<bool>(reply);
    }
    m_extensions.shape = present(&xcb_shape_id);
}

quint8 XConnection::firstEvent(xcb_extension_t *extension) const
{
    const xcb_query_extension_reply_t *data = xcb_get_extension_data(m_connection, extension);
    return data && data->present ? data->first_event : quint8(0);
}

bool XConnection::isBroken() const noexcept
{
    return xcb_connection_has_error(m_connection) != 0;
}

QString XConnection::brokenText() const
{
    switch (xcb_connection_has_error(m_connection)) {
    case 0:
        return {};
    case XCB_CONN_CLOSED_PARSE_ERR:
        return QStringLiteral("DISPLAY 的写法无效");
    case XCB_CONN_CLOSED_INVALID_SCREEN:
        return QStringLiteral("X 服务器没有这个屏幕");
    case XCB_CONN_CLOSED_MEM_INSUFFICIENT:
        return QStringLiteral("内存不足");
    default:
        return QStringLiteral("与 X 服务器的连接已断开");
    }
}

void XConnection::drainEvents() const
{
    const std::scoped_lock lock(m_reading);
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
        if (event->response_type != 0)
            continue;
        const auto *error = reinterpret_cast<const xcb_generic_error_t *>(event.get());
        // Windows come and go while they are looked at, so this is nothing to worry the user with.
        qCDebug(lcX).noquote() << QStringLiteral("X 错误 %1，请求 %2.%3，资源 0x%4")
                                      .arg(error->error_code)
                                      .arg(error->major_code)
                                      .arg(error->minor_code)
                                      .arg(error->resource_id, 0, 16);
    }
}

xcb_timestamp_t XConnection::serverTime() const
{
    const std::scoped_lock lock(m_reading);
    if (m_clockWindow == XCB_WINDOW_NONE) {
        m_clockWindow = xcb_generate_id(m_connection);
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(m_connection, 0, m_clockWindow, root(), -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    }
    // Appending nothing changes nothing, and tells the time.
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_clockWindow, atom(XAtom::Timestamp), XCB_ATOM_INTEGER, 32,
                        0, nullptr);
    xcb_flush(m_connection);
    while (const XReply<xcb_generic_event_t> event{xcb_wait_for_event(m_connection)}) {
        const auto *change = reinterpret_cast<const xcb_property_notify_event_t *>(event.get());
        if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY && change->window == m_clockWindow)
            return change->time;
    }
    return XCB_CURRENT_TIME;
}

bool XConnection::sync() const
{
    const XReply<xcb_get_input_focus_reply_t> reply{
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)};
    return static_cast<bool>(reply);
}

bool XConnection::succeeded(xcb_void_cookie_t cookie) const
{
    const XReply<xcb_generic_error_t> error{xcb_request_check(m_connection, cookie)};
    return !error && !isBroken();
}

xcb_get_property_cookie_t XConnection::requestProperty(xcb_window_t window, XAtom property, xcb_atom_t type,
                                                       quint32 maxBytes) const
{
    return xcb_get_property(m_connection, 0, window, atom(property), type, 0, (maxBytes + 3) / 4);
}

XReply<xcb_get_property_reply_t> XConnection::property(xcb_get_property_cookie_t cookie) const
{
    return xAnswer<xcb_get_property_reply_t>(m_connection, cookie, xcb_get_property_reply);
}

QList<quint32> propertyItems(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 32)
        return {};
    const auto *first = static_cast<const quint32 *>(xcb_get_property_value(reply));
    return QList<quint32>(first, first + reply->value_len);
}

QByteArray propertyBytes(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->format != 8)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply)),
                      static_cast<qsizetype>(reply->value_len));
}

QString propertyText(const XConnection &x, const xcb_get_property_reply_t *reply)
{
    QByteArray bytes = propertyBytes(reply);
    if (const auto end = bytes.indexOf('\0'); end >= 0)
        bytes.truncate(end);
    if (reply && reply->type == x.atom(XAtom::Utf8String))
        return QString::fromUtf8(bytes);
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

xcb_connection_t *qtConnection()
{
    if (!qGuiApp)
        return nullptr;
    const auto *native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

void syncQtConnection()
{
    if (xcb_connection_t *qt = qtConnection())
        XReply<xcb_get_input_focus_reply_t>{xcb_get_input_focus_reply(qt, xcb_get_input_focus(qt), nullptr)};
}

bool belongsToQt(xcb_window_t window)
{
    xcb_connection_t *qt = qtConnection();
    if (!qt || window == XCB_WINDOW_NONE)
        return false;
    const xcb_setup_t *setup = xcb_get_setup(qt);
    return (window & ~setup->resource_id_mask) == setup->resource_id_base;
}

} // namespace tavrel::platform
