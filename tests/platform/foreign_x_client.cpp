#include "foreign_x_client.h"

#include <xcb/xcbext.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace tavrel::test {
namespace {

struct Free
{
    void operator()(void *memory) const noexcept { std::free(memory); }
};
template <typename T>
using Reply = std::unique_ptr<T, Free>;

} // namespace

ForeignXClient::ForeignXClient() : m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0)
        qFatal("no X server");
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    const Reply<xcb_test_get_version_reply_t> xtest{
        xcb_test_get_version_reply(m_connection, xcb_test_get_version(m_connection, 2, 2), nullptr)};
    const Reply<xcb_input_xi_query_version_reply_t> xinput{
        xcb_input_xi_query_version_reply(m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr)};
    const Reply<xcb_xkb_use_extension_reply_t> xkb{
        xcb_xkb_use_extension_reply(m_connection, xcb_xkb_use_extension(m_connection, 1, 0), nullptr)};
    if (!xtest || !xinput || !xkb)
        qFatal("the X server lacks XTEST, XInput 2 or XKB");
}

ForeignXClient::~ForeignXClient()
{
    xcb_disconnect(m_connection);
}

void ForeignXClient::sync() const
{
    const Reply<xcb_get_input_focus_reply_t> reply{
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)};
}

xcb_keycode_t ForeignXClient::keyCode(quint32 symbol) const
{
    const std::unique_ptr<xcb_key_symbols_t, void (*)(xcb_key_symbols_t *)> symbols(xcb_key_symbols_alloc(m_connection),
                                                                                    xcb_key_symbols_free);
    const Reply<xcb_keycode_t> codes{xcb_key_symbols_get_keycode(symbols.get(), symbol)};
    return codes ? *codes : xcb_keycode_t(0);
}

void ForeignXClient::keyDown(xcb_keycode_t key)
{
    xcb_test_fake_input(m_connection, XCB_KEY_PRESS, key, 0, XCB_WINDOW_NONE, 0, 0, 0);
    sync();
}

void ForeignXClient::keyUp(xcb_keycode_t key)
{
    xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, key, 0, XCB_WINDOW_NONE, 0, 0, 0);
    sync();
}

void ForeignXClient::stroke(xcb_keycode_t key)
{
    keyDown(key);
    keyUp(key);
}

bool ForeignXClient::grabKey(GrabKind kind, xcb_keycode_t key, quint32 modifiers)
{
    if (kind == GrabKind::Core) {
        const Reply<xcb_generic_error_t> error{
            xcb_request_check(m_connection, xcb_grab_key_checked(m_connection, 0, m_root, quint16(modifiers), key,
                                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC))};
        return !error;
    }
    const quint32 events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const Reply<xcb_input_xi_passive_grab_device_reply_t> reply{xcb_input_xi_passive_grab_device_reply(
        m_connection,
        xcb_input_xi_passive_grab_device(m_connection, XCB_CURRENT_TIME, m_root, XCB_CURSOR_NONE, key,
                                         XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                         XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, 0, &events,
                                         &modifiers),
        nullptr)};
    return reply && reply->num_modifiers == 0;
}

void ForeignXClient::ungrabKey(GrabKind kind, xcb_keycode_t key, quint32 modifiers)
{
    if (kind == GrabKind::Core)
        xcb_ungrab_key(m_connection, key, m_root, quint16(modifiers));
    else
        xcb_input_xi_passive_ungrab_device(m_connection, m_root, key, XCB_INPUT_DEVICE_ALL_MASTER, 1,
                                           XCB_INPUT_GRAB_TYPE_KEYCODE, &modifiers);
    sync();
}

bool ForeignXClient::takeKeyboardAndPointer(bool frozen)
{
    const Reply<xcb_grab_pointer_reply_t> pointer{xcb_grab_pointer_reply(
        m_connection,
        xcb_grab_pointer(m_connection, 0, m_root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                         XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME),
        nullptr)};
    const Reply<xcb_grab_keyboard_reply_t> keyboard{
        xcb_grab_keyboard_reply(m_connection,
                                xcb_grab_keyboard(m_connection, 0, m_root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                                                  frozen ? XCB_GRAB_MODE_SYNC : XCB_GRAB_MODE_ASYNC),
                                nullptr)};
    return pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS && keyboard &&
           keyboard->status == XCB_GRAB_STATUS_SUCCESS;
}

void ForeignXClient::releaseEverything()
{
    xcb_ungrab_keyboard(m_connection, XCB_CURRENT_TIME);
    xcb_ungrab_pointer(m_connection, XCB_CURRENT_TIME);
    sync();
}

void ForeignXClient::setServerGrabbed(bool grabbed)
{
    if (grabbed)
        xcb_grab_server(m_connection);
    else
        xcb_ungrab_server(m_connection);
    sync();
}

bool ForeignXClient::focusOwnWindow()
{
    m_window = xcb_generate_id(m_connection);
    const quint32 values[] = {1, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, 0, 0, 50, 50, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                      values);
    xcb_map_window(m_connection, m_window);
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
    const Reply<xcb_get_input_focus_reply_t> focus{
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)};
    return focus && focus->focus == m_window;
}

QList<int> ForeignXClient::takeKeysOfWindow()
{
    sync();
    QList<int> keys;
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
        if ((event->response_type & 0x7f) != XCB_KEY_PRESS)
            continue;
        const auto *press = reinterpret_cast<const xcb_key_press_event_t *>(event.get());
        if (press->event == m_window)
            keys.append(press->detail);
    }
    return keys;
}

void ForeignXClient::swapKeys(xcb_keycode_t one, xcb_keycode_t other)
{
    const auto read = [this](xcb_keycode_t key) {
        return Reply<xcb_get_keyboard_mapping_reply_t>{
            xcb_get_keyboard_mapping_reply(m_connection, xcb_get_keyboard_mapping(m_connection, key, 1), nullptr)};
    };
    const auto ofOne = read(one);
    const auto ofOther = read(other);
    xcb_change_keyboard_mapping(m_connection, 1, one, ofOther->keysyms_per_keycode,
                                xcb_get_keyboard_mapping_keysyms(ofOther.get()));
    xcb_change_keyboard_mapping(m_connection, 1, other, ofOne->keysyms_per_keycode,
                                xcb_get_keyboard_mapping_keysyms(ofOne.get()));
    sync();
}

bool ForeignXClient::changeModifiers(const std::function<void(std::vector<xcb_keycode_t> &keys, int width)> &change)
{
    const Reply<xcb_get_modifier_mapping_reply_t> mapping{
        xcb_get_modifier_mapping_reply(m_connection, xcb_get_modifier_mapping(m_connection), nullptr)};
    const int width = mapping->keycodes_per_modifier;
    std::vector<xcb_keycode_t> keys(xcb_get_modifier_mapping_keycodes(mapping.get()),
                                    xcb_get_modifier_mapping_keycodes(mapping.get()) + 8 * width);
    change(keys, width);
    const Reply<xcb_set_modifier_mapping_reply_t> reply{xcb_set_modifier_mapping_reply(
        m_connection, xcb_set_modifier_mapping(m_connection, mapping->keycodes_per_modifier, keys.data()), nullptr)};
    return reply && reply->status == XCB_MAPPING_STATUS_SUCCESS;
}

bool ForeignXClient::swapModifiers(int one, int other)
{
    return changeModifiers([one, other](std::vector<xcb_keycode_t> &keys, int width) {
        std::swap_ranges(keys.begin() + one * width, keys.begin() + (one + 1) * width, keys.begin() + other * width);
    });
}

bool ForeignXClient::setModifierKey(int modifier, xcb_keycode_t key)
{
    return changeModifiers([modifier, key](std::vector<xcb_keycode_t> &keys, int width) {
        const auto first = keys.begin() + modifier * width;
        std::fill_n(first, width, xcb_keycode_t(0));
        *first = key;
    });
}

void ForeignXClient::lockGroup(int group)
{
    xcb_xkb_latch_lock_state(m_connection, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, quint8(group), 0, 0, 0);
    sync();
}

void ForeignXClient::lockModifiers(quint32 modifiers)
{
    xcb_xkb_latch_lock_state(m_connection, XCB_XKB_ID_USE_CORE_KBD, 0xff, quint8(modifiers), 0, 0, 0, 0, 0);
    sync();
}

void ForeignXClient::setAutoRepeat(quint16 delay, quint16 interval)
{
    const quint8 perKey[32] = {};
    xcb_xkb_set_controls(m_connection, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         XCB_XKB_BOOL_CTRL_REPEAT_KEYS, delay, interval, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, perKey);
    sync();
}

quint32 ForeignXClient::modifierState() const
{
    const Reply<xcb_xkb_get_state_reply_t> state{
        xcb_xkb_get_state_reply(m_connection, xcb_xkb_get_state(m_connection, XCB_XKB_ID_USE_CORE_KBD), nullptr)};
    return state ? state->mods : 0;
}

} // namespace tavrel::test
