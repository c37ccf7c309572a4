#include "platform/linux/x11_window_controller.h"

#include "platform/linux/capture_exclusions.h"
#include "platform/linux/root_children.h"
#include "platform/linux/screen_mapping.h"
#include "platform/linux/x_connection.h"

#include <QEvent>
#include <QGuiApplication>
#include <QPlatformSurfaceEvent>

#include <xcb/shape.h>

#include <initializer_list>
#include <optional>

namespace tavrel::platform {

namespace {

// _NET_WM_STATE_REMOVE and _ADD, and who asks for an activation: a pager, that is the user.
constexpr quint32 kStateRemove = 0;
constexpr quint32 kStateAdd = 1;
constexpr quint32 kSourcePager = 2;

xcb_window_t nativeId(const QWindow *window)
{
    // winId() of a window without a native handle would make one.
    return window && window->handle() ? static_cast<xcb_window_t>(window->winId()) : 0;
}

bool bypassesWindowManager(const QWindow *window)
{
    return window->flags().testFlag(Qt::X11BypassWindowManagerHint);
}

/// Sends a request on Qt's connection whose failure does not matter: the window may be gone.
void forget(xcb_connection_t *qt, xcb_void_cookie_t checked)
{
    xcb_discard_reply(qt, checked.sequence);
    xcb_flush(qt);
}

void sendToRoot(const XConnection &x, xcb_connection_t *qt, xcb_window_t window, XAtom type,
                std::initializer_list<quint32> values)
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = x.atom(type);
    std::copy(values.begin(), values.end(), std::begin(message.data.data32));
    forget(qt, xcb_send_event_checked(qt, 0, x.root(),
                                      XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                                      reinterpret_cast<const char *>(&message)));
}

bool isMapped(xcb_connection_t *c, xcb_window_t window)
{
    const auto attributes = xAnswer<xcb_get_window_attributes_reply_t>(c, xcb_get_window_attributes(c, window),
                                                                       xcb_get_window_attributes_reply);
    return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
}

bool hasWindowManager(const XConnection &x)
{
    // The property survives a window manager that died; the window that it names does not.
    const auto named = propertyItems(x.property(x.requestProperty(x.root(), XAtom::NetSupportingWmCheck)).get());
    if (named.isEmpty())
        return false;
    const auto own = propertyItems(x.property(x.requestProperty(named.first(), XAtom::NetSupportingWmCheck)).get());
    return own == named;
}

/// Asks the window manager to add or remove states of a window that is on the screen. Before that there is nobody to
/// ask, and Qt writes the property anew when it shows the window. False then.
bool setStates(const XConnection &x, xcb_window_t window, std::initializer_list<XAtom> states, bool on)
{
    xcb_connection_t *qt = qtConnection();
    if (!qt || window == XCB_WINDOW_NONE || !isMapped(qt, window))
        return false;
    for (const XAtom state : states)
        sendToRoot(x, qt, window, XAtom::NetWmState, {on ? kStateAdd : kStateRemove, x.atom(state), 0, 1, 0});
    return true;
}

} // namespace

/// What has been asked for each window, kept in force while the window lives.
class X11WindowController::Roles final : public QObject
{
public:
    Roles(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions)
        : m_x(std::move(x)),
          m_exclusions(std::move(exclusions))
    {}

    ~Roles() override
    {
        for (const State &state : std::as_const(m_states))
            m_exclusions->remove(state.excludedId);
    }

    void setRole(QWindow *window, WindowRole role)
    {
        State &state = stateOf(window);
        state.role = role;
        if (role == WindowRole::Overlay)
            state.excluded = true;
        exclude(window, state);
        applyFlags(window, role);
        applyStates(window, role);
    }

    void setExcluded(QWindow *window, bool excluded)
    {
        State &state = stateOf(window);
        state.excluded = excluded;
        exclude(window, state);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *window = qobject_cast<QWindow *>(watched);
        const auto state = window ? m_states.find(window) : m_states.end();
        if (state == m_states.end())
            return false;
        if (event->type() == QEvent::PlatformSurface) {
            const auto what = static_cast<QPlatformSurfaceEvent *>(event)->surfaceEventType();
            if (what == QPlatformSurfaceEvent::SurfaceCreated) {
                exclude(window, *state);
                if (state->role)
                    applyStates(window, *state->role);
            } else {
                m_exclusions->remove(std::exchange(state->excludedId, 0));
            }
        } else if (event->type() == QEvent::Show) {
            state->appears = true;
        } else if (event->type() == QEvent::Expose && state->appears && window->isExposed()) {
            // A window that was withdrawn has lost its states. An exposure may be a late one from before that.
            state->appears = state->role && !applyStates(window, *state->role);
        }
        return false;
    }

private:
    struct State
    {
        std::optional<WindowRole> role;
        bool excluded = false;
        bool appears = false; ///< shown, but not on the screen yet
        WId excludedId = 0;   ///< under which native id it is in the shared set
    };

    State &stateOf(QWindow *window)
    {
        const auto known = m_states.find(window);
        if (known != m_states.end())
            return *known;
        window->installEventFilter(this);
        connect(window, &QObject::destroyed, this,
                [this, window] { m_exclusions->remove(m_states.take(window).excludedId); });
        return m_states[window];
    }

    void exclude(const QWindow *window, State &state)
    {
        const WId id = state.excluded ? nativeId(window) : 0;
        if (id == state.excludedId)
            return;
        m_exclusions->remove(std::exchange(state.excludedId, id));
        if (id != 0)
            m_exclusions->add(id);
    }

    static void applyFlags(QWindow *window, WindowRole role)
    {
        switch (role) {
        case WindowRole::Overlay:
            window->setFlags(window->flags() | Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint |
                             Qt::WindowStaysOnTopHint);
            break;
        case WindowRole::Panel:
            window->setFlag(Qt::WindowStaysOnTopHint);
            // Nobody activates a window that the window manager does not know. It may have the keyboard already, as an
            // overlay has, and Qt would drop its keys.
            if (!bypassesWindowManager(window))
                window->setFlag(Qt::WindowDoesNotAcceptFocus);
            // Read by the platform plug-in when it maps the window: a time of last use of 0.
            window->setProperty("_q_showWithoutActivating", true);
            break;
        case WindowRole::Floating:
            window->setFlag(Qt::WindowStaysOnTopHint);
            break;
        case WindowRole::Normal:
            window->setFlag(Qt::WindowStaysOnTopHint, false);
            break;
        }
    }

    /// False when it is too early to.
    bool applyStates(const QWindow *window, WindowRole role) const
    {
        const xcb_window_t id = nativeId(window);
        if (id == XCB_WINDOW_NONE)
            return false;
        // Not the window manager's business. Nor is a compositor told to keep its hands off: with
        // _NET_WM_BYPASS_COMPOSITOR set to "never" picom leaves the picture of a full-screen window on the screen
        // after it has gone.
        if (role == WindowRole::Overlay)
            return true;
        return setStates(*m_x, id, {XAtom::NetWmStateAbove, XAtom::NetWmStateSkipTaskbar, XAtom::NetWmStateSkipPager},
                         role != WindowRole::Normal);
    }

    std::shared_ptr<XConnection> m_x;
    std::shared_ptr<CaptureExclusions> m_exclusions;
    QHash<QWindow *, State> m_states;
};

X11WindowController::X11WindowController(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions)
    : m_x(std::move(x)),
      m_roles(std::make_unique<Roles>(m_x, std::move(exclusions)))
{}

X11WindowController::~X11WindowController() = default;

void X11WindowController::setWindowRole(QWindow *window, WindowRole role)
{
    if (window)
        m_roles->setRole(window, role);
}

void X11WindowController::setExcludedFromCapture(QWindow *window, bool excluded)
{
    if (window)
        m_roles->setExcluded(window, excluded);
}

void X11WindowController::rememberActive()
{
    m_x->drainEvents();
    const auto active = m_x->requestProperty(m_x->root(), XAtom::NetActiveWindow, XCB_ATOM_WINDOW);
    const XReply<xcb_get_input_focus_reply_t> focus{
        xcb_get_input_focus_reply(m_x->xcb(), xcb_get_input_focus(m_x->xcb()), nullptr)};
    const auto activeWindow = propertyItems(m_x->property(active).get()).value(0, XCB_WINDOW_NONE);
    if (!focus || belongsToQt(focus->focus))
        return; // active already: what was remembered then still counts
    // The window manager tells a moment later than the focus moves, so what it names may be our own window still.
    m_previousActive = belongsToQt(activeWindow) ? focus->focus : activeWindow;
    m_previousFocus = focus->focus;
}

void X11WindowController::activate(QWindow *window)
{
    if (!window) {
        for (QWindow *candidate : QGuiApplication::topLevelWindows()) {
            if (candidate->isVisible()) {
                window = candidate;
                break;
            }
        }
    }
    xcb_connection_t *qt = qtConnection();
    const xcb_window_t id = nativeId(window);
    if (!qt || id == XCB_WINDOW_NONE)
        return;
    rememberActive();
    window->raise();
    // On Qt's connection, behind its request to show the window.
    if (bypassesWindowManager(window) || !hasWindowManager(*m_x))
        forget(qt, xcb_set_input_focus_checked(qt, XCB_INPUT_FOCUS_POINTER_ROOT, id, XCB_CURRENT_TIME));
    else
        sendToRoot(*m_x, qt, id, XAtom::NetActiveWindow, {kSourcePager, m_x->serverTime(), 0, 0, 0});
}

bool X11WindowController::isApplicationActive() const
{
    if (m_x->isBroken() || !qtConnection())
        return QGuiApplication::applicationState() == Qt::ApplicationActive;
    const auto active = m_x->requestProperty(m_x->root(), XAtom::NetActiveWindow, XCB_ATOM_WINDOW);
    const XReply<xcb_get_input_focus_reply_t> focus{
        xcb_get_input_focus_reply(m_x->xcb(), xcb_get_input_focus(m_x->xcb()), nullptr)};
    const auto activeWindow = propertyItems(m_x->property(active).get()).value(0, XCB_WINDOW_NONE);
    return (focus && belongsToQt(focus->focus)) || belongsToQt(activeWindow);
}

void X11WindowController::deactivateApplication()
{
    const xcb_window_t active = std::exchange(m_previousActive, XCB_WINDOW_NONE);
    const xcb_window_t focus = std::exchange(m_previousFocus, XCB_WINDOW_NONE);
    xcb_connection_t *qt = qtConnection();
    if (!qt || !isApplicationActive())
        return;
    if (active != XCB_WINDOW_NONE && hasWindowManager(*m_x)) {
        sendToRoot(*m_x, qt, active, XAtom::NetActiveWindow, {kSourcePager, m_x->serverTime(), 0, 0, 0});
    } else if (focus != XCB_WINDOW_NONE) {
        // A window, or 1 for whatever is under the pointer.
        forget(qt, xcb_set_input_focus_checked(qt, XCB_INPUT_FOCUS_POINTER_ROOT, focus, XCB_CURRENT_TIME));
    }
}

void X11WindowController::setDockPresence(bool) {} // task-bar entries come and go with the windows

void X11WindowController::placeOnDisplay(QWindow *window, const QRect &geometry)
{
    if (!window || geometry.isEmpty())
        return;
    window->setGeometry(geometry);
    xcb_connection_t *qt = qtConnection();
    const xcb_window_t id = nativeId(window);
    if (!qt || id == XCB_WINDOW_NONE)
        return;
    // Qt multiplies a rounded logical size by the ratio, which is a pixel off for some sizes and ratios.
    const QRect native = ScreenMapping(currentDisplays(), nativeMonitors(*m_x)).toNative(QRectF(geometry));
    const quint32 values[] = {static_cast<quint32>(native.x()), static_cast<quint32>(native.y()),
                              static_cast<quint32>(native.width()), static_cast<quint32>(native.height())};
    forget(qt, xcb_configure_window_checked(qt, id,
                                            XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                                XCB_CONFIG_WINDOW_HEIGHT,
                                            values));
}

void X11WindowController::releaseActivation() {} // the window manager picks the next window by itself

void X11WindowController::setClickThrough(QWindow *window, bool through)
{
    xcb_connection_t *qt = qtConnection();
    const xcb_window_t id = nativeId(window);
    if (!qt || id == XCB_WINDOW_NONE)
        return;
    // Not Qt's flag for it: that takes the keys away as well.
    if (through)
        forget(qt, xcb_shape_rectangles_checked(qt, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                                                id, 0, 0, 0, nullptr));
    else
        forget(qt, xcb_shape_mask_checked(qt, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, id, 0, 0, XCB_NONE));
    xcb_flush(qt);
}

void X11WindowController::setOverlayLowered(QWindow *window, bool lowered)
{
    xcb_connection_t *qt = qtConnection();
    const xcb_window_t id = nativeId(window);
    if (!qt || id == XCB_WINDOW_NONE)
        return;
    if (!lowered) {
        window->raise();
        return;
    }
    // Above the ordinary windows that are there now, but below the layer in which the window manager keeps panels:
    // a window that it opens from here on comes between the two. Without a window manager it comes on top anyway.
    const QList<quint32> clients = propertyItems(
        m_x->property(m_x->requestProperty(m_x->root(), XAtom::NetClientListStacking, XCB_ATOM_WINDOW, 1 << 16)).get());
    QList<QPair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> flights;
    for (const quint32 client : clients)
        flights.append({m_x->requestProperty(client, XAtom::NetWmState, XCB_ATOM_ATOM),
                        m_x->requestProperty(client, XAtom::NetWmWindowType, XCB_ATOM_ATOM)});
    quint32 topmost = XCB_WINDOW_NONE;
    for (qsizetype i = 0; i < clients.size(); ++i) {
        const auto states = propertyItems(m_x->property(flights[i].first).get());
        const auto types = propertyItems(m_x->property(flights[i].second).get());
        if (!belongsToQt(clients[i]) && !states.contains(m_x->atom(XAtom::NetWmStateAbove)) &&
            !states.contains(m_x->atom(XAtom::NetWmStateHidden)) &&
            !types.contains(m_x->atom(XAtom::NetWmWindowTypeDock)))
            topmost = clients[i];
    }
    const quint32 frame = topmost == XCB_WINDOW_NONE ? topmost : rootChildrenOf(*m_x, {topmost}).first();
    if (frame == XCB_WINDOW_NONE) {
        const quint32 bottom = XCB_STACK_MODE_BELOW; // nothing is there to be above
        forget(qt, xcb_configure_window_checked(qt, id, XCB_CONFIG_WINDOW_STACK_MODE, &bottom));
        return;
    }
    const quint32 values[] = {frame, XCB_STACK_MODE_ABOVE};
    forget(qt, xcb_configure_window_checked(qt, id, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE, values));
}

bool X11WindowController::isCompositing() const
{
    const XReply<xcb_get_selection_owner_reply_t> owner{xcb_get_selection_owner_reply(
        m_x->xcb(), xcb_get_selection_owner(m_x->xcb(), m_x->atom(XAtom::CompositeManager)), nullptr)};
    return owner && owner->owner != XCB_NONE;
}

void X11WindowController::setTitleBarHeight(QWindow *, int) {}

} // namespace tavrel::platform
