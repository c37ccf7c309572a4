#pragma once

#include "settings/settings_config.h"

namespace tavrel::ui {

/// What a key asks of an overlay that stands idle or over a selection.
enum class OverlayCommand {
    None,
    Leave,
    SelectAll,
    Copy,
    Save,
    Pin,
    Older, ///< in the history
    Newer,
    SwitchColorFormat,
    CopyColor,
    ToggleWindow, ///< between window and smallest candidate under the pointer
};

struct OverlayKeyState
{
    bool hasSelection = false;
    bool hasTool = false;
    bool picksColor = false; ///< the pointer is on a pixel of the picture
};

/// What the user has bound; these come before everything but Escape.
[[nodiscard]] OverlayCommand boundCommand(const KeyCombo &combo, const BuiltinKeys &keys, bool hasSelection);
/// What always holds. `key` is the one of the event, since a combination leaves single modifiers out.
[[nodiscard]] OverlayCommand fixedCommand(const KeyCombo &combo, int key, const OverlayKeyState &state);

} // namespace tavrel::ui
