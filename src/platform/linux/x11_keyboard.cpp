#include "platform/linux/x11_keyboard.h"

#include "platform/linux/x_connection.h"

#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <utility>

namespace tavrel::platform {
namespace {

constexpr quint32 kCoreModifiers = 0xff;

} // namespace

bool selectRootInput(const XConnection &x, quint32 mask)
{
    xcb_connection_t *c = x.xcb();
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(c, &xcb_input_id);
    if (!extension || !extension->present)
        return false;
    const auto version = xAnswer<xcb_input_xi_query_version_reply_t>(c, xcb_input_xi_query_version(c, 2, 2),
                                                                     xcb_input_xi_query_version_reply);
    if (!version || version->major_version < 2 || (version->major_version == 2 && version->minor_version < 1))
        return false;
    struct
    {
        xcb_input_event_mask_t head;
        quint32 mask;
    } const events{{.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1}, mask};
    return x.succeeded(xcb_input_xi_select_events_checked(c, x.root(), 1, &events.head));
}

std::unique_ptr<X11Keyboard> X11Keyboard::attach(const XConnection &x)
{
    xcb_connection_t *c = x.xcb();
    quint8 firstEvent = 0;
    if (!xkb_x11_setup_xkb_extension(c, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent, nullptr))
        return nullptr;
    constexpr quint16 kMapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                  XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_KEY_ACTIONS |
                                  XCB_XKB_MAP_PART_VIRTUAL_MODS | XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    constexpr quint16 kStateParts = XCB_XKB_STATE_PART_MODIFIER_BASE | XCB_XKB_STATE_PART_MODIFIER_LATCH |
                                    XCB_XKB_STATE_PART_MODIFIER_LOCK | XCB_XKB_STATE_PART_GROUP_STATE;
    xcb_xkb_select_events_details_t details = {};
    details.affectState = kStateParts;
    details.stateDetails = kStateParts;
    xcb_xkb_select_events_aux(c, XCB_XKB_ID_USE_CORE_KBD,
                              XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                  XCB_XKB_EVENT_TYPE_STATE_NOTIFY,
                              0, XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY, kMapParts, kMapParts, &details);
    // The map is read after asking for its changes, so none is missed.
    std::unique_ptr<X11Keyboard> keyboard(new X11Keyboard(x, firstEvent));
    return keyboard->reread() ? std::move(keyboard) : nullptr;
}

X11Keyboard::X11Keyboard(const XConnection &x, quint8 firstEvent)
    : m_x(x),
      m_firstEvent(firstEvent),
      m_deviceId(xkb_x11_get_core_keyboard_device_id(x.xcb()))
{}

X11Keyboard::Change X11Keyboard::handleEvent(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f;
    if (type == XCB_MAPPING_NOTIFY)
        return Change::Keymap;
    if (type != m_firstEvent)
        return Change::None;
    const auto &state = reinterpret_cast<const xcb_xkb_state_notify_event_t &>(event);
    if (state.xkbType != XCB_XKB_STATE_NOTIFY)
        return Change::Keymap;
    xkb_state_update_mask(m_state.get(), state.baseMods, state.latchedMods, state.lockedMods,
                          static_cast<quint32>(state.baseGroup), static_cast<quint32>(state.latchedGroup),
                          state.lockedGroup);
    return std::exchange(m_layout, state.group) != state.group ? Change::Layout : Change::None;
}

bool X11Keyboard::reread()
{
    auto keymap = X11Keymap::fromServer(m_x, m_deviceId);
    XkbStatePtr state(keymap ? xkb_x11_state_new_from_device(keymap->xkb(), m_x.xcb(), m_deviceId) : nullptr);
    if (!state)
        return false;
    // Which modifiers are held is what the events up to here have told; the server already knows of later ones.
    if (m_state)
        xkb_state_update_mask(state.get(), xkb_state_serialize_mods(m_state.get(), XKB_STATE_MODS_DEPRESSED),
                              xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_LATCHED),
                              xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_LOCKED),
                              xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_DEPRESSED),
                              xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_LATCHED),
                              xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_LOCKED));
    m_keymap = std::move(keymap);
    m_state = std::move(state);
    m_layout = xkb_state_serialize_layout(m_state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    return true;
}

void X11Keyboard::moveKey(xcb_keycode_t key, bool down)
{
    xkb_state_update_key(m_state.get(), key, down ? XKB_KEY_DOWN : XKB_KEY_UP);
}

void X11Keyboard::setState(const xcb_xkb_get_state_reply_t &state)
{
    xkb_state_update_mask(m_state.get(), state.baseMods, state.latchedMods, state.lockedMods,
                          static_cast<quint32>(state.baseGroup), static_cast<quint32>(state.latchedGroup),
                          state.lockedGroup);
}

quint32 X11Keyboard::heldModifiers() const
{
    return xkb_state_serialize_mods(m_state.get(), XKB_STATE_MODS_EFFECTIVE) & kCoreModifiers &
           ~m_keymap->lockModifiers();
}

} // namespace tavrel::platform
