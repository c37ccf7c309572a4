#include "foreign_x_client.h"

#include <xcb/xcbext.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit

#include <algorithm>

namespace tavrel::test {

ForeignXClient::ForeignXClient()
{
    if (!TAVREL_X_ASK(m_c, test_get_version, 2, 2) || !TAVREL_X_ASK(m_c, input_xi_query_version, 2, 2) ||
        !TAVREL_X_ASK(m_c, xkb_use_extension, 1, 0))
        qFatal("the X server lacks XTEST, XInput 2 or XKB");
}

void ForeignXClient::keyDown(xcb_keycode_t key)
{
    xcb_test_fake_input(m_c, XCB_KEY_PRESS, key, 0, XCB_WINDOW_NONE, 0, 0, 0);
    sync();
}

void ForeignXClient::keyUp(xcb_keycode_t key)
{
    xcb_test_fake_input(m_c, XCB_KEY_RELEASE, key, 0, XCB_WINDOW_NONE, 0, 0, 0);
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
        const XReply<xcb_generic_error_t> error{
            xcb_request_check(m_c, xcb_grab_key_checked(m_c, 0, m_screen->root, quint16(modifiers), key,
                                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC))};
        return !error;
    }
    const quint32 events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_KEY_RELEASE;
    const auto reply =
        TAVREL_X_ASK(m_c, input_xi_passive_grab_device, XCB_CURRENT_TIME, m_screen->root, XCB_CURSOR_NONE, key,
                     XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                     XCB_INPUT_GRAB_MODE_22_ASYNC, 0, &events, &modifiers);
    return reply && reply->num_modifiers == 0;
}

void ForeignXClient::ungrabKey(GrabKind kind, xcb_keycode_t key, quint32 modifiers)
{
    if (kind == GrabKind::Core)
        xcb_ungrab_key(m_c, key, m_screen->root, quint16(modifiers));
    else
        xcb_input_xi_passive_ungrab_device(m_c, m_screen->root, key, XCB_INPUT_DEVICE_ALL_MASTER, 1,
                                           XCB_INPUT_GRAB_TYPE_KEYCODE, &modifiers);
    sync();
}

bool ForeignXClient::takeKeyboardAndPointer(bool frozen)
{
    const auto pointer =
        TAVREL_X_ASK(m_c, grab_pointer, 0, m_screen->root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
                     XCB_GRAB_MODE_ASYNC, XCB_WINDOW_NONE, XCB_CURSOR_NONE, XCB_CURRENT_TIME);
    const auto keyboard = TAVREL_X_ASK(m_c, grab_keyboard, 0, m_screen->root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                                       frozen ? XCB_GRAB_MODE_SYNC : XCB_GRAB_MODE_ASYNC);
    return pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS && keyboard &&
           keyboard->status == XCB_GRAB_STATUS_SUCCESS;
}

void ForeignXClient::releaseEverything()
{
    xcb_ungrab_keyboard(m_c, XCB_CURRENT_TIME);
    xcb_ungrab_pointer(m_c, XCB_CURRENT_TIME);
    sync();
}

void ForeignXClient::setServerGrabbed(bool grabbed)
{
    if (grabbed)
        xcb_grab_server(m_c);
    else
        xcb_ungrab_server(m_c);
    sync();
}

bool ForeignXClient::focusOwnWindow()
{
    m_window = xcb_generate_id(m_c);
    const quint32 values[] = {1, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(m_c, XCB_COPY_FROM_PARENT, m_window, m_screen->root, 0, 0, 50, 50, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                      values);
    xcb_map_window(m_c, m_window);
    xcb_set_input_focus(m_c, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
    const auto focus = TAVREL_X_ASK(m_c, get_input_focus);
    return focus && focus->focus == m_window;
}

QList<int> ForeignXClient::takeKeysOfWindow()
{
    sync();
    QList<int> keys;
    while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(m_c)}) {
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
    const auto read = [this](xcb_keycode_t key) { return TAVREL_X_ASK(m_c, get_keyboard_mapping, key, 1); };
    const auto ofOne = read(one);
    const auto ofOther = read(other);
    xcb_change_keyboard_mapping(m_c, 1, one, ofOther->keysyms_per_keycode,
                                xcb_get_keyboard_mapping_keysyms(ofOther.get()));
    xcb_change_keyboard_mapping(m_c, 1, other, ofOne->keysyms_per_keycode,
                                xcb_get_keyboard_mapping_keysyms(ofOne.get()));
    sync();
}

bool ForeignXClient::swapModifiers(int one, int other)
{
    const auto mapping = TAVREL_X_ASK(m_c, get_modifier_mapping);
    const int width = mapping->keycodes_per_modifier;
    xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(mapping.get());
    std::swap_ranges(keys + one * width, keys + (one + 1) * width, keys + other * width);
    const auto reply = TAVREL_X_ASK(m_c, set_modifier_mapping, mapping->keycodes_per_modifier, keys);
    return reply && reply->status == XCB_MAPPING_STATUS_SUCCESS;
}

void ForeignXClient::lockGroup(int group)
{
    xcb_xkb_latch_lock_state(m_c, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, quint8(group), 0, 0, 0);
    sync();
}

void ForeignXClient::lockModifiers(quint32 modifiers)
{
    xcb_xkb_latch_lock_state(m_c, XCB_XKB_ID_USE_CORE_KBD, 0xff, quint8(modifiers), 0, 0, 0, 0, 0);
    sync();
}

void ForeignXClient::setAutoRepeat(quint16 delay, quint16 interval)
{
    const quint8 perKey[32] = {};
    xcb_xkb_set_controls(m_c, XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         XCB_XKB_BOOL_CTRL_REPEAT_KEYS, delay, interval, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, perKey);
    sync();
}

quint32 ForeignXClient::modifierState() const
{
    const auto state = TAVREL_X_ASK(m_c, xkb_get_state, XCB_XKB_ID_USE_CORE_KBD);
    return state ? state->mods : 0;
}

} // namespace tavrel::test
