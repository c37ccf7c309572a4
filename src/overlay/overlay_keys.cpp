#include "overlay/overlay_keys.h"

#include <array>

namespace tavrel::ui {

OverlayCommand boundCommand(const KeyCombo &combo, const BuiltinKeys &keys, bool hasSelection)
{
    struct Row
    {
        const HotkeyBinding &binding;
        OverlayCommand command;
        bool needsSelection;
    };
    const std::array rows{Row{keys.selectFullScreen, OverlayCommand::SelectAll, false},
                          Row{keys.copySelection, OverlayCommand::Copy, true},
                          Row{keys.saveScreenshot, OverlayCommand::Save, true},
                          Row{keys.pin, OverlayCommand::Pin, true},
                          Row{keys.prevHistory, OverlayCommand::Older, false},
                          Row{keys.nextHistory, OverlayCommand::Newer, false}};
    for (const Row &row : rows) {
        if (row.binding.isActive() && row.binding.combo == combo && (hasSelection || !row.needsSelection))
            return row.command;
    }
    return OverlayCommand::None;
}

OverlayCommand fixedCommand(const KeyCombo &combo, int key, const OverlayKeyState &state)
{
    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && state.hasSelection)
        return OverlayCommand::Copy;
    if (key == Qt::Key_Shift && !(state.hasSelection && state.hasTool))
        return OverlayCommand::SwitchColorFormat;
    if (key == Qt::Key_Space && !state.hasSelection && !state.hasTool)
        return OverlayCommand::ToggleWindow;
    if (combo == KeyCombo{.key = Qt::Key_C} && state.picksColor)
        return OverlayCommand::CopyColor;
    return OverlayCommand::None;
}

} // namespace tavrel::ui
