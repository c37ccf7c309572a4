#pragma once

#include "platform/auto_start.h"
#include "platform/element_detector.h"
#include "platform/global_hotkey.h"
#include "platform/input_injector.h"
#include "platform/input_monitor.h"
#include "platform/notifier.h"
#include "platform/permissions.h"
#include "platform/screen_capturer.h"
#include "platform/window_controller.h"

#include <QPoint>
#include <QString>

#include <functional>
#include <memory>

class QObject;

namespace tavrel::platform {

/// What the program has from the system it runs on.
struct Services
{
    std::unique_ptr<IScreenCapturer> screenCapturer{};
    std::unique_ptr<IGlobalHotkey> globalHotkey{};
    std::shared_ptr<IWindowController> windowController{};
    std::shared_ptr<IElementDetector> elementDetector{};
    std::shared_ptr<IPermissions> permissions{};
    std::shared_ptr<IAutoStart> autoStart{};
    std::shared_ptr<INotifier> notifier{};
    std::function<QPoint()> cursorPosition{}; ///< global logical coordinates
    /// Says later, on the calling thread, whether a host is known; never holds the program for it.
    std::function<void(const QString &host, std::function<void(bool found)> done)> lookUpHost{};
};

// One source file in the folder of each system defines these and is the only one that names its classes.

/// Fills every service that is still empty, so that none is. GUI thread only, as what it makes.
[[nodiscard]] Services withSystemServices(Services services);
[[nodiscard]] std::unique_ptr<IInputMonitor> makeInputMonitor();
/// Null on a system that takes no input from programs.
[[nodiscard]] std::unique_ptr<IInputInjector> makeInputInjector();
/// Lets the system end the program in its usual order (end of the desktop session, Ctrl+C in a terminal).
void followSystemTermination(QObject *owner);

} // namespace tavrel::platform
