#include "platform/linux/x11_input_injector.h"

#include "platform/linux/x11_keymap.h"
#include "platform/linux/x_connection.h"
#include "settings/key_combo.h"

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace tavrel::platform {
namespace {

constexpr quint8 kXButtons[] = {0, XCB_BUTTON_INDEX_1, XCB_BUTTON_INDEX_3, XCB_BUTTON_INDEX_2};

} // namespace

std::unique_ptr<X11InputInjector> X11InputInjector::create(const QByteArray &display)
{
    std::unique_ptr<XConnection> x = XConnection::create(nullptr, display);
    if (!x)
        return nullptr;
    const xcb_query_extension_reply_t *extension = xcb_get_extension_data(x->xcb(), &xcb_test_id);
    if (!extension || !extension->present ||
        !xkb_x11_setup_xkb_extension(x->xcb(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                     XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr))
        return nullptr;
    return std::unique_ptr<X11InputInjector>(new X11InputInjector(std::move(x)));
}

X11InputInjector::X11InputInjector(std::unique_ptr<XConnection> x) : m_x(std::move(x)) {}

X11InputInjector::~X11InputInjector() = default;

void X11InputInjector::send(quint8 type, quint8 detail, int dx, int dy) const
{
    xcb_test_fake_input(m_x->xcb(), type, detail, XCB_CURRENT_TIME, XCB_WINDOW_NONE, static_cast<qint16>(dx),
                        static_cast<qint16>(dy), 0);
}

xcb_keycode_t X11InputInjector::modifierKey(unsigned bit) const
{
    const auto mapping = xAnswer<xcb_get_modifier_mapping_reply_t>(m_x->xcb(), xcb_get_modifier_mapping(m_x->xcb()),
                                                                   xcb_get_modifier_mapping_reply);
    if (!mapping)
        return 0;
    const xcb_keycode_t *row = xcb_get_modifier_mapping_keycodes(mapping.get()) + bit * mapping->keycodes_per_modifier;
    for (int i = 0; i < mapping->keycodes_per_modifier; ++i) {
        if (row[i] != 0)
            return row[i];
    }
    return 0;
}

bool X11InputInjector::tap(const KeyCombo &combo)
{
    const int keyboard = xkb_x11_get_core_keyboard_device_id(m_x->xcb());
    const auto keymap = X11Keymap::fromServer(*m_x, keyboard);
    const XkbStatePtr state(keymap ? xkb_x11_state_new_from_device(keymap->xkb(), m_x->xcb(), keyboard) : nullptr);
    if (!state)
        return false;
    const auto strokes = keymap->strokes(combo, xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE));
    if (strokes.empty())
        return false;
    const KeyStroke &stroke = strokes.front();
    std::vector<xcb_keycode_t> keys;
    for (unsigned bit = 0; bit < 8; ++bit) {
        if (!(stroke.modifiers & (1U << bit)))
            continue;
        keys.push_back(modifierKey(bit));
        if (keys.back() == 0)
            return false;
    }
    keys.push_back(static_cast<xcb_keycode_t>(stroke.key));
    for (const xcb_keycode_t key : keys)
        send(XCB_KEY_PRESS, key);
    for (auto key = keys.crbegin(); key != keys.crend(); ++key)
        send(XCB_KEY_RELEASE, *key);
    return m_x->sync();
}

bool X11InputInjector::moveBy(int dx, int dy)
{
    constexpr quint8 kRelative = 1;
    send(XCB_MOTION_NOTIFY, kRelative, dx, dy);
    return m_x->sync();
}

bool X11InputInjector::clickButton(quint8 button)
{
    send(XCB_BUTTON_PRESS, button);
    send(XCB_BUTTON_RELEASE, button);
    return m_x->sync();
}

bool X11InputInjector::click(int button)
{
    return button >= 1 && button <= 3 && clickButton(kXButtons[button]);
}

bool X11InputInjector::scroll(bool up)
{
    return clickButton(up ? XCB_BUTTON_INDEX_4 : XCB_BUTTON_INDEX_5);
}

} // namespace tavrel::platform
