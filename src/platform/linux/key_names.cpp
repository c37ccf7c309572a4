#include "platform/linux/key_names.h"

#include <QChar>

#include <algorithm>
#include <array>

namespace tavrel::platform {
namespace {

struct Key
{
    xkb_keysym_t symbol;
    int qtKey;
    const char *name; ///< empty for a key that is shown without one
};

constexpr std::array kKeys{
    Key{XKB_KEY_BackSpace, Qt::Key_Backspace, "Backspace"},
    Key{XKB_KEY_Tab, Qt::Key_Tab, "Tab"},
    Key{XKB_KEY_ISO_Left_Tab, Qt::Key_Backtab, "Tab"},
    Key{XKB_KEY_Return, Qt::Key_Return, "Enter"},
    Key{XKB_KEY_KP_Enter, Qt::Key_Enter, "Enter"},
    Key{XKB_KEY_Shift_L, Qt::Key_Shift, "Shift"},
    Key{XKB_KEY_Shift_R, Qt::Key_Shift, "Shift"},
    Key{XKB_KEY_Control_L, Qt::Key_Control, "Ctrl"},
    Key{XKB_KEY_Control_R, Qt::Key_Control, "Ctrl"},
    Key{XKB_KEY_Alt_L, Qt::Key_Alt, "Alt"},
    Key{XKB_KEY_Alt_R, Qt::Key_Alt, "Alt"},
    Key{XKB_KEY_Meta_L, Qt::Key_Alt, "Alt"}, // what Alt becomes under Shift
    Key{XKB_KEY_Meta_R, Qt::Key_Alt, "Alt"},
    Key{XKB_KEY_ISO_Level3_Shift, Qt::Key_AltGr, "Alt"},
    Key{XKB_KEY_Super_L, Qt::Key_Meta, "Win"},
    Key{XKB_KEY_Super_R, Qt::Key_Meta, "Win"},
    Key{XKB_KEY_Escape, Qt::Key_Escape, "Esc"},
    Key{XKB_KEY_space, Qt::Key_Space, "Space"},
    Key{XKB_KEY_Left, Qt::Key_Left, "Left"},
    Key{XKB_KEY_Up, Qt::Key_Up, "Up"},
    Key{XKB_KEY_Right, Qt::Key_Right, "Right"},
    Key{XKB_KEY_Down, Qt::Key_Down, "Down"},
    Key{XKB_KEY_KP_Left, Qt::Key_Left, "Left"},
    Key{XKB_KEY_KP_Up, Qt::Key_Up, "Up"},
    Key{XKB_KEY_KP_Right, Qt::Key_Right, "Right"},
    Key{XKB_KEY_KP_Down, Qt::Key_Down, "Down"},
    Key{XKB_KEY_Delete, Qt::Key_Delete, "Del"},
    Key{XKB_KEY_KP_Delete, Qt::Key_Delete, "Del"},
    Key{XKB_KEY_Insert, Qt::Key_Insert, ""},
    Key{XKB_KEY_KP_Insert, Qt::Key_Insert, ""},
    Key{XKB_KEY_Home, Qt::Key_Home, ""},
    Key{XKB_KEY_KP_Home, Qt::Key_Home, ""},
    Key{XKB_KEY_End, Qt::Key_End, ""},
    Key{XKB_KEY_KP_End, Qt::Key_End, ""},
    Key{XKB_KEY_Page_Up, Qt::Key_PageUp, ""},
    Key{XKB_KEY_KP_Page_Up, Qt::Key_PageUp, ""},
    Key{XKB_KEY_Page_Down, Qt::Key_PageDown, ""},
    Key{XKB_KEY_KP_Page_Down, Qt::Key_PageDown, ""},
    Key{XKB_KEY_Pause, Qt::Key_Pause, ""},
    Key{XKB_KEY_Print, Qt::Key_Print, ""},
    Key{XKB_KEY_Menu, Qt::Key_Menu, ""},
    Key{XKB_KEY_Caps_Lock, Qt::Key_CapsLock, ""},
    Key{XKB_KEY_Num_Lock, Qt::Key_NumLock, ""},
    Key{XKB_KEY_Scroll_Lock, Qt::Key_ScrollLock, ""},
};

const Key *find(xkb_keysym_t symbol)
{
    const auto *found = std::ranges::find(kKeys, symbol, &Key::symbol);
    return found == kKeys.end() ? nullptr : found;
}

} // namespace

QString keyName(xkb_keysym_t symbol)
{
    if (const Key *key = find(symbol))
        return QString::fromLatin1(key->name);
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F24)
        return QStringLiteral("F%1").arg(symbol - XKB_KEY_F1 + 1);
    const char32_t character = QChar::toUpper(char32_t(xkb_keysym_to_utf32(symbol)));
    return QChar::isLetterOrNumber(character) ? QString::fromUcs4(&character, 1) : QString();
}

int qtKeyOf(xkb_keysym_t symbol)
{
    if (const Key *key = find(symbol))
        return key->qtKey;
    if (symbol >= XKB_KEY_F1 && symbol <= XKB_KEY_F35)
        return Qt::Key_F1 + static_cast<int>(symbol - XKB_KEY_F1);
    const char32_t character = QChar::toUpper(char32_t(xkb_keysym_to_utf32(symbol)));
    return QChar::isPrint(character) && character < 0x10000 ? static_cast<int>(character) : int(Qt::Key_unknown);
}

} // namespace tavrel::platform
