#pragma once

class QRect;
class QWindow;

namespace tavrel::platform {

/// The behaviour that a window asks of the window system.
enum class WindowRole {
    Overlay = 0,  ///< above everything, no task-bar entry, excluded from capture
    Floating = 1, ///< always on top, no task-bar entry
    Normal = 2,   ///< an ordinary window of the application
    Panel = 3,    ///< always on top, no task-bar entry, never takes activation
};

/// What the program asks of the window system beyond Qt. GUI thread only; every operation tolerates a window whose
/// native handle does not exist yet or that is gone from the screen.
class IWindowController
{
public:
    IWindowController() = default;
    IWindowController(const IWindowController &) = delete;
    IWindowController &operator=(const IWindowController &) = delete;
    virtual ~IWindowController() = default;

    /// Applies a role. Overlay also switches setExcludedFromCapture() on; other roles leave it as it is.
    virtual void setWindowRole(QWindow *window, WindowRole role) = 0;
    /// Keeps a window out of every picture that the screen capturer takes, without hiding it.
    virtual void setExcludedFromCapture(QWindow *window, bool excluded) = 0;
    /// Raises the window and gives it the keyboard against the system's foreground rules. A null window takes the
    /// first visible top-level window of the application.
    virtual void activate(QWindow *window) = 0;
    /// Whether this application is the active one.
    [[nodiscard]] virtual bool isApplicationActive() const = 0;
    /// Gives the activation back to the application that had it before activate().
    virtual void deactivateApplication() = 0;
    /// The application is to appear in the system's application switcher while `present`.
    virtual void setDockPresence(bool present) = 0;
    /// Puts a window exactly over `geometry` (global logical coordinates) where the system would otherwise move it.
    virtual void placeOnDisplay(QWindow *window, const QRect &geometry) = 0;
    /// No window of the application is left open, so that it can leave the foreground.
    virtual void releaseActivation() = 0;
    /// With true the pointer reaches what lies below the window.
    virtual void setClickThrough(QWindow *window, bool through) = 0;
    /// With true a prompt of the system may come above an overlay.
    virtual void setOverlayLowered(QWindow *window, bool lowered) = 0;
    /// Whether a translucent window shows what lies below it; without that its empty parts are black.
    [[nodiscard]] virtual bool isCompositing() const = 0;
    /// Height in logical pixels of the title bar that the window draws itself.
    virtual void setTitleBarHeight(QWindow *window, int height) = 0;
};

} // namespace tavrel::platform
