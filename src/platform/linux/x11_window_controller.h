#pragma once

#include "platform/window_controller.h"

#include <QWindow>

#include <memory>

namespace tavrel::platform {

class CaptureExclusions;
class XConnection;

/// Window roles on X11.
///
/// An overlay bypasses the window manager (override-redirect). Of all ways only this one behaves the same with a
/// window manager, without one and under a compositor: the window is on the screen as soon as the request reaches
/// the server, at exactly the rectangle asked for (a managed window is moved into the work area, animated, or made
/// to wait for its frame), above panels and full-screen windows. The price is that nobody hands such a window the
/// keyboard, so activate() takes the focus itself. It takes the focus and not a grab: a grab would silence
/// the program's own hotkeys and its input methods. The other roles are managed windows with the states of EWMH.
///
/// The controller keeps applying a role: when Qt makes the native window anew and when a window is shown again, since
/// window managers forget the states of a withdrawn window.
class X11WindowController final : public IWindowController
{
public:
    X11WindowController(std::shared_ptr<XConnection> x, std::shared_ptr<CaptureExclusions> exclusions);
    ~X11WindowController() override;

    void setWindowRole(QWindow *window, WindowRole role) override;
    void setExcludedFromCapture(QWindow *window, bool excluded) override;
    void activate(QWindow *window) override;
    [[nodiscard]] bool isApplicationActive() const override;
    void deactivateApplication() override;
    void setDockPresence(bool present) override;
    void placeOnDisplay(QWindow *window, const QRect &geometry) override;
    void releaseActivation() override;
    void setClickThrough(QWindow *window, bool through) override;
    void setOverlayLowered(QWindow *window, bool lowered) override;
    [[nodiscard]] bool isCompositing() const override;
    void setTitleBarHeight(QWindow *window, int height) override;

private:
    class Roles;

    void rememberActive();

    std::shared_ptr<XConnection> m_x;
    std::unique_ptr<Roles> m_roles;
    quint32 m_previousActive = 0; ///< another client's window that _NET_ACTIVE_WINDOW named
    quint32 m_previousFocus = 0;  ///< another client's window that had the keyboard
};

} // namespace tavrel::platform
