#pragma once

#include "platform/window_controller.h"

#include <QHash>
#include <QList>
#include <QStringList>

namespace tavrel::test {

/// Moves no window, and remembers what was asked of it.
class FakeWindows final : public platform::IWindowController
{
public:
    void setWindowRole(QWindow *window, platform::WindowRole role) override { roles[window] = role; }
    void setExcludedFromCapture(QWindow *, bool) override {}
    void activate(QWindow *window) override { activated.append(window); }
    bool isApplicationActive() const override { return active; }
    void deactivateApplication() override { events.append(QStringLiteral("deactivate")); }
    void setDockPresence(bool) override {}
    void placeOnDisplay(QWindow *, const QRect &) override {}
    void releaseActivation() override { events.append(QStringLiteral("release")); }
    void setClickThrough(QWindow *, bool) override {}
    void setOverlayLowered(QWindow *, bool on) override { lowered.append(on); }
    bool isCompositing() const override { return composited; }
    void setTitleBarHeight(QWindow *, int) override {}

    bool active = false;
    bool composited = true;
    QHash<QWindow *, platform::WindowRole> roles;
    QList<QWindow *> activated;
    QList<bool> lowered;
    QStringList events;
};

} // namespace tavrel::test
