#pragma once

namespace tavrel::ui {

/// What the pointer does while a button is held.
enum class OverlayMode : int {
    Idle = 0,
    Selecting = 1, ///< the rubber band is drawn
    Moving = 2,    ///< the selection is moved as a whole
    Resizing = 3,  ///< the selection is resized by a handle
    Drawing = 4,   ///< the pointer goes to the annotations
};

} // namespace tavrel::ui
