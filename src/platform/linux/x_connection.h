#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QString>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <mutex>

namespace tavrel::platform {

struct FreeDeleter
{
    void operator()(void *memory) const noexcept { std::free(memory); }
};

/// Owner of what xcb hands out with malloc: replies, errors, events. Null stands for "no answer".
template <typename Reply>
using XReply = std::unique_ptr<Reply, FreeDeleter>;

/// Reads an answer whose failure is an ordinary thing, such as that of a window that is gone: null then, and no
/// error left behind for others to trip over. `fetch` is xcb's function for the reply.
template <typename Reply, typename Cookie, typename Fetch>
[[nodiscard]] XReply<Reply> xAnswer(xcb_connection_t *connection, Cookie cookie, Fetch fetch)
{
    xcb_generic_error_t *error = nullptr;
    XReply<Reply> reply{fetch(connection, cookie, &error)};
    std::free(error);
    return reply;
}

/// The atoms that the program uses, fetched in one flight when the connection is made.
enum class XAtom {
    NetActiveWindow,
    NetClientListStacking,
    NetFrameExtents,
    NetSupportingWmCheck,
    NetWmIcon,
    NetWmName,
    NetWmPid,
    NetWmState,
    NetWmStateAbove,
    NetWmStateHidden,
    NetWmStateSkipPager,
    NetWmStateSkipTaskbar,
    NetWmUserTime,
    NetWmWindowType,
    NetWmWindowTypeCombo,
    NetWmWindowTypeDesktop,
    NetWmWindowTypeDnd,
    NetWmWindowTypeDock,
    NetWmWindowTypeDropdownMenu,
    NetWmWindowTypeMenu,
    NetWmWindowTypeNotification,
    NetWmWindowTypePopupMenu,
    NetWmWindowTypeToolbar,
    NetWmWindowTypeTooltip,
    GtkFrameExtents,
    WmState,
    RootPixmap,       ///< _XROOTPMAP_ID
    SetRootPixmap,    ///< ESETROOT_PMAP_ID
    CompositeManager, ///< the selection _NET_WM_CM_Sn of this connection's screen
    Utf8String,
    Timestamp, ///< a property of our own, changed to learn the server's time
    Count,
};

/// A connection of the program's own to the X server, apart from Qt's.
///
/// Nothing that goes wrong on it ends the process: an error that belongs to a request is a null reply or an XReply
/// of an error, one that nobody waits for is logged by drainEvents(), and a server that goes away leaves
/// isBroken() true and every further reply null. xcb connections may be used by several threads at once, and so may
/// this class. Resources made on it go when the last owner goes.
class XConnection final
{
public:
    /// Which extensions the server has, in versions that are enough for this program.
    struct Extensions
    {
        bool randrMonitors = false;  ///< RandR 1.5
        bool shmDescriptors = false; ///< MIT-SHM 1.2
        bool shmPixmaps = false;     ///< the server draws into shared memory
        bool composite = false;      ///< 0.4, with XFixes
        bool fixes = false;          ///< 5.0
        bool render = false;
        bool shape = false;
    };

    /// Null when there is no server to be reached; `error` then holds a diagnostic text (not for the user).
    /// `display` as in $DISPLAY, empty for $DISPLAY itself.
    [[nodiscard]] static std::unique_ptr<XConnection> create(QString *error = nullptr, const QByteArray &display = {});
    ~XConnection();
    XConnection(const XConnection &) = delete;
    XConnection &operator=(const XConnection &) = delete;

    [[nodiscard]] xcb_connection_t *xcb() const noexcept { return m_connection; }
    [[nodiscard]] const xcb_screen_t &screen() const noexcept { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const noexcept { return m_screen->root; }
    [[nodiscard]] xcb_atom_t atom(XAtom name) const noexcept { return m_atoms[static_cast<std::size_t>(name)]; }
    [[nodiscard]] const Extensions &extensions() const noexcept { return m_extensions; }
    /// First event code of an extension; 0 when it is absent.
    [[nodiscard]] quint8 firstEvent(xcb_extension_t *extension) const;

    [[nodiscard]] bool isBroken() const noexcept;
    /// Why the connection is broken, for the log; empty while it works.
    [[nodiscard]] QString brokenText() const;

    /// Throws away the events that have piled up and logs the errors among them. Not for a connection whose owner
    /// reads events itself. Called at the start of each operation.
    void drainEvents() const;
    /// Waits until the server has done everything sent so far. False when the connection is broken.
    bool sync() const;
    /// The server's time at this moment, as window managers want it in a request to activate a window; 0 when the
    /// connection is broken. Like drainEvents() not for a connection whose owner reads events itself.
    [[nodiscard]] xcb_timestamp_t serverTime() const;
    /// True when a request that was sent checked has succeeded; a failure is swallowed.
    [[nodiscard]] bool succeeded(xcb_void_cookie_t cookie) const;

    /// Asks for a property, to be read with the functions below. `maxBytes` is rounded up to four.
    [[nodiscard]] xcb_get_property_cookie_t
    requestProperty(xcb_window_t window, XAtom property, xcb_atom_t type = XCB_ATOM_ANY, quint32 maxBytes = 4096) const;
    [[nodiscard]] XReply<xcb_get_property_reply_t> property(xcb_get_property_cookie_t cookie) const;

private:
    XConnection(xcb_connection_t *connection, int screenNumber);
    void fetchAtomsAndExtensions(int screenNumber);

    xcb_connection_t *m_connection;
    xcb_screen_t *m_screen = nullptr;
    xcb_atom_t m_atoms[static_cast<std::size_t>(XAtom::Count)] = {};
    Extensions m_extensions;
    mutable std::mutex m_reading; ///< one reader of events at a time, or serverTime() could miss its answer
    mutable xcb_window_t m_clockWindow = XCB_WINDOW_NONE;
};

/// The 32-bit items of a property (atoms, windows, cardinals); empty for a missing one or another format.
[[nodiscard]] QList<quint32> propertyItems(const xcb_get_property_reply_t *reply);
/// The bytes of an 8-bit property; empty for a missing one or another format.
[[nodiscard]] QByteArray propertyBytes(const xcb_get_property_reply_t *reply);
/// Text of WM_NAME and its like: UTF-8 when the type says so or the bytes are valid UTF-8, else Latin 1.
[[nodiscard]] QString propertyText(const XConnection &x, const xcb_get_property_reply_t *reply);

/// Qt's connection to the same server; null on a platform other than xcb. For requests that have to stay in order
/// with Qt's own requests for a window.
[[nodiscard]] xcb_connection_t *qtConnection();
/// Waits until the server has done all that Qt has asked of it so far. GUI thread only.
void syncQtConnection();
/// Whether an X resource was made by Qt's connection, which makes a window one of this process.
[[nodiscard]] bool belongsToQt(xcb_window_t window);

} // namespace tavrel::platform
