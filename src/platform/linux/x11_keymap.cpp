#include "platform/linux/x11_keymap.h"

#include "platform/linux/x_connection.h"
#include "settings/key_combo.h"

#include <QChar>

#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace tavrel::platform {
namespace {

constexpr quint32 kShift = XCB_MOD_MASK_SHIFT;
constexpr quint32 kCapsLock = XCB_MOD_MASK_LOCK;
constexpr quint32 kControl = XCB_MOD_MASK_CONTROL;
constexpr quint32 kCoreModifiers = 0xff;

struct NamedKey
{
    int qtKey;
    xkb_keysym_t symbol;
};

constexpr std::array kNamedKeys{
    NamedKey{Qt::Key_Escape, XKB_KEY_Escape},
    NamedKey{Qt::Key_Tab, XKB_KEY_Tab},
    NamedKey{Qt::Key_Backtab, XKB_KEY_ISO_Left_Tab},
    NamedKey{Qt::Key_Backspace, XKB_KEY_BackSpace},
    NamedKey{Qt::Key_Return, XKB_KEY_Return},
    NamedKey{Qt::Key_Enter, XKB_KEY_KP_Enter},
    NamedKey{Qt::Key_Insert, XKB_KEY_Insert},
    NamedKey{Qt::Key_Delete, XKB_KEY_Delete},
    NamedKey{Qt::Key_Pause, XKB_KEY_Pause},
    NamedKey{Qt::Key_Print, XKB_KEY_Print},
    NamedKey{Qt::Key_SysReq, XKB_KEY_Sys_Req},
    NamedKey{Qt::Key_Clear, XKB_KEY_Clear},
    NamedKey{Qt::Key_Home, XKB_KEY_Home},
    NamedKey{Qt::Key_End, XKB_KEY_End},
    NamedKey{Qt::Key_Left, XKB_KEY_Left},
    NamedKey{Qt::Key_Up, XKB_KEY_Up},
    NamedKey{Qt::Key_Right, XKB_KEY_Right},
    NamedKey{Qt::Key_Down, XKB_KEY_Down},
    NamedKey{Qt::Key_PageUp, XKB_KEY_Page_Up},
    NamedKey{Qt::Key_PageDown, XKB_KEY_Page_Down},
    NamedKey{Qt::Key_NumLock, XKB_KEY_Num_Lock},
    NamedKey{Qt::Key_ScrollLock, XKB_KEY_Scroll_Lock},
    NamedKey{Qt::Key_Menu, XKB_KEY_Menu},
    NamedKey{Qt::Key_Help, XKB_KEY_Help},
};

constexpr int kFirstDeadKey = Qt::Key_Dead_Grave; ///< from here both numberings run in step up to the horn
constexpr int kLastDeadKey = Qt::Key_Dead_Horn;

/// The rows of a US keyboard by the names that keymaps give to their places.
struct PlaceRow
{
    const char *prefix;
    std::string_view keys;
};
constexpr std::array kUsRows{PlaceRow{"AE", "1234567890"}, PlaceRow{"AD", "qwertyuiop"}, PlaceRow{"AC", "asdfghjkl"},
                             PlaceRow{"AB", "zxcvbnm"}};

/// What a key has to make to be the one that a combo names: a symbol, or any symbol for a character.
struct WantedKey
{
    xkb_keysym_t symbol = XKB_KEY_NoSymbol;
    quint32 character = 0; ///< lower case; 0 when the symbol counts

    [[nodiscard]] bool exists() const { return symbol != XKB_KEY_NoSymbol || character != 0; }
    [[nodiscard]] bool isDigit() const { return character >= U'0' && character <= U'9'; }
    [[nodiscard]] bool isMadeBy(xkb_keysym_t made) const
    {
        if (character == 0)
            return made == symbol;
        // Function, number pad and editing keys have characters too, but are no characters' keys.
        if (made >= 0xff00 && made <= 0xffff)
            return false;
        return xkb_keysym_to_utf32(xkb_keysym_to_lower(made)) == character;
    }
};

WantedKey wantedKey(int qtKey)
{
    if (qtKey > 0 && qtKey < 0x10000) // Qt's code of such a key is its character
        return {.symbol = XKB_KEY_NoSymbol, .character = QChar::toLower(static_cast<char32_t>(qtKey))};
    if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F35)
        return {.symbol = XKB_KEY_F1 + static_cast<xkb_keysym_t>(qtKey - Qt::Key_F1)};
    if (qtKey >= kFirstDeadKey && qtKey <= kLastDeadKey)
        return {.symbol = XKB_KEY_dead_grave + static_cast<xkb_keysym_t>(qtKey - kFirstDeadKey)};
    const auto named = std::find_if(kNamedKeys.begin(), kNamedKeys.end(),
                                    [qtKey](const NamedKey &candidate) { return candidate.qtKey == qtKey; });
    return {.symbol = named == kNamedKeys.end() ? static_cast<xkb_keysym_t>(XKB_KEY_NoSymbol) : named->symbol};
}

/// The modifiers that bring a key to a level: those that add least to `held`. Nothing when a lock is needed.
std::optional<quint32> modifiersForLevel(xkb_keymap *keymap, xkb_keycode_t key, xkb_layout_index_t layout,
                                         xkb_level_index_t level, quint32 locks, quint32 held)
{
    std::array<xkb_mod_mask_t, 32> masks;
    const std::size_t count = xkb_keymap_key_get_mods_for_level(keymap, key, layout, level, masks.data(), masks.size());
    std::optional<quint32> best;
    for (std::size_t i = 0; i < std::min(count, masks.size()); ++i) {
        if ((masks[i] & (locks | ~kCoreModifiers)) != 0)
            continue;
        if (!best || std::popcount(masks[i] & ~held) < std::popcount(*best & ~held))
            best = masks[i];
    }
    return best;
}

/// How well a key serves a combo; less is better.
enum Rank { ExactHere, SubsetHere, ExactElsewhere, SubsetElsewhere, MoreHere, MoreElsewhere, NoRank };

/// Where a key is on the keyboard that keymaps name their places after, when no layout makes its symbol: letters and
/// digits as on a US keyboard, function keys beyond F12, to which many keymaps give the names of other things.
std::vector<KeyStroke> strokesByPlace(xkb_keymap *keymap, const WantedKey &wanted, quint32 modifiers)
{
    const auto nameOf = [](const char *prefix, std::size_t number) {
        const std::string digits = std::to_string(number);
        return prefix + std::string(digits.size() < 2 ? 1 : 0, '0') + digits;
    };
    std::string name;
    if (wanted.character == 0 && wanted.symbol >= XKB_KEY_F1 && wanted.symbol <= XKB_KEY_F24)
        name = nameOf("FK", wanted.symbol - XKB_KEY_F1 + 1);
    for (const PlaceRow &row : kUsRows) {
        if (wanted.character == 0 || wanted.character >= 0x80)
            continue;
        const std::size_t place = row.keys.find(static_cast<char>(wanted.character));
        if (place != row.keys.npos)
            name = nameOf(row.prefix, place + 1);
    }
    const xkb_keycode_t key = name.empty() ? XKB_KEYCODE_INVALID : xkb_keymap_key_by_name(keymap, name.c_str());
    if (key == XKB_KEYCODE_INVALID)
        return {};
    return {{.key = key, .modifiers = modifiers}};
}

/// Whether any key of a modifier makes one of the symbols.
bool makesAny(xkb_keymap *keymap, const xcb_keycode_t *keys, int count, std::initializer_list<xkb_keysym_t> symbols)
{
    return std::any_of(keys, keys + count, [&](xcb_keycode_t key) {
        for (xkb_layout_index_t layout = 0; key != 0 && layout < xkb_keymap_num_layouts_for_key(keymap, key);
             ++layout) {
            for (xkb_level_index_t level = 0; level < xkb_keymap_num_levels_for_key(keymap, key, layout); ++level) {
                const xkb_keysym_t *made = nullptr;
                const int madeCount = xkb_keymap_key_get_syms_by_level(keymap, key, layout, level, &made);
                if (std::find_first_of(made, made + madeCount, symbols.begin(), symbols.end()) != made + madeCount)
                    return true;
            }
        }
        return false;
    });
}

XModifierRoles rolesFrom(xkb_keymap *keymap, const xcb_get_modifier_mapping_reply_t *mapping)
{
    XModifierRoles roles{.alt = 0, .meta = 0, .numLock = 0, .scrollLock = 0};
    const xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(mapping);
    const int width = mapping->keycodes_per_modifier;
    // Mod1 to Mod5 can mean anything; Shift, Lock and Control are what they are called.
    for (int modifier = 3; modifier < 8; ++modifier) {
        const xcb_keycode_t *row = keys + modifier * width;
        const quint32 bit = 1U << modifier;
        if (makesAny(keymap, row, width, {XKB_KEY_Num_Lock}))
            roles.numLock |= bit;
        else if (makesAny(keymap, row, width, {XKB_KEY_Scroll_Lock}))
            roles.scrollLock |= bit;
        else if (roles.alt == 0 && makesAny(keymap, row, width, {XKB_KEY_Alt_L, XKB_KEY_Alt_R}))
            roles.alt = bit;
        else if (roles.meta == 0 && makesAny(keymap, row, width, {XKB_KEY_Super_L, XKB_KEY_Super_R}))
            roles.meta = bit;
    }
    return roles;
}

} // namespace

void XkbKeymapUnref::operator()(xkb_keymap *keymap) const noexcept
{
    xkb_keymap_unref(keymap);
}

void XkbStateUnref::operator()(xkb_state *state) const noexcept
{
    xkb_state_unref(state);
}

std::unique_ptr<X11Keymap> X11Keymap::fromServer(const XConnection &x, int keyboardId)
{
    const xcb_get_modifier_mapping_cookie_t cookie = xcb_get_modifier_mapping(x.xcb());
    const std::unique_ptr<xkb_context, void (*)(xkb_context *)> context(
        xkb_context_new(
            static_cast<xkb_context_flags>(XKB_CONTEXT_NO_DEFAULT_INCLUDES | XKB_CONTEXT_NO_ENVIRONMENT_NAMES)),
        xkb_context_unref);
    XkbKeymapPtr keymap(
        context ? xkb_x11_keymap_new_from_device(context.get(), x.xcb(), keyboardId, XKB_KEYMAP_COMPILE_NO_FLAGS)
                : nullptr);
    const XReply<xcb_get_modifier_mapping_reply_t> mapping{xcb_get_modifier_mapping_reply(x.xcb(), cookie, nullptr)};
    if (!keymap || !mapping)
        return nullptr;
    const XModifierRoles roles = rolesFrom(keymap.get(), mapping.get());
    return std::make_unique<X11Keymap>(std::move(keymap), roles);
}

X11Keymap::X11Keymap(XkbKeymapPtr keymap, const XModifierRoles &roles)
    : m_keymap(std::move(keymap)),
      m_roles(roles),
      m_lockModifiers(kCapsLock | roles.numLock | roles.scrollLock)
{}

std::vector<KeyStroke> X11Keymap::strokes(const KeyCombo &combo, quint32 group) const
{
    const WantedKey wanted = wantedKey(combo.key);
    if (!wanted.exists() || (combo.alt && m_roles.alt == 0) || (combo.meta && m_roles.meta == 0))
        return {};
    const quint32 held = (combo.ctrl ? kControl : 0) | (combo.shift ? kShift : 0) | (combo.alt ? m_roles.alt : 0) |
                         (combo.meta ? m_roles.meta : 0);
    xkb_keymap *keymap = m_keymap.get();
    const XkbStatePtr state(xkb_state_new(keymap));
    if (!state)
        return {};
    // Only Shift chooses between characters. What Ctrl and Alt make of a key (Alt+Print is SysRq) is another name for
    // the same key, not a reason to prefer some other one.
    xkb_state_update_mask(state.get(), held & kShift, 0, 0, 0, 0, group);

    std::tuple<Rank, int> best{NoRank, 0}; // and how many modifiers have to be added
    std::vector<KeyStroke> found;
    const auto consider = [&](xkb_keycode_t key, xkb_layout_index_t layout, xkb_level_index_t level) {
        const std::optional<quint32> needed = modifiersForLevel(keymap, key, layout, level, m_lockModifiers, held);
        if (!needed)
            return;
        const bool isHere = xkb_state_key_get_layout(state.get(), key) == layout;
        const bool isExact = xkb_state_key_get_level(state.get(), key, layout) == level;
        const quint32 added = wanted.isDigit() && (*needed & ~held) == kShift ? 0 : *needed & ~held;
        const Rank rank = added != 0 ? (isHere ? MoreHere : MoreElsewhere)
                          : isExact  ? (isHere ? ExactHere : ExactElsewhere)
                                     : (isHere ? SubsetHere : SubsetElsewhere);
        const std::tuple quality{rank, std::popcount(added)};
        if (quality > best)
            return;
        if (quality < best)
            found.clear();
        best = quality;
        found.push_back({.key = key, .modifiers = held | added});
    };
    for (xkb_keycode_t key = xkb_keymap_min_keycode(keymap); key <= xkb_keymap_max_keycode(keymap); ++key) {
        for (xkb_layout_index_t layout = 0; layout < xkb_keymap_num_layouts_for_key(keymap, key); ++layout) {
            for (xkb_level_index_t level = 0; level < xkb_keymap_num_levels_for_key(keymap, key, layout); ++level) {
                const xkb_keysym_t *made = nullptr;
                const int count = xkb_keymap_key_get_syms_by_level(keymap, key, layout, level, &made);
                if (std::any_of(made, made + count, [&wanted](xkb_keysym_t symbol) { return wanted.isMadeBy(symbol); }))
                    consider(key, layout, level);
            }
        }
    }
    if (found.empty())
        return strokesByPlace(keymap, wanted, held);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

std::vector<quint32> X11Keymap::lockVariants() const
{
    std::vector<quint32> variants{0};
    for (quint32 bit = 1; bit <= kCoreModifiers; bit <<= 1) {
        if ((m_lockModifiers & bit) == 0)
            continue;
        for (std::size_t i = variants.size(); i-- > 0;)
            variants.push_back(variants[i] | bit);
    }
    return variants;
}

} // namespace tavrel::platform
