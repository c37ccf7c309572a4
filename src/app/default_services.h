#pragma once

#include "app/app_controller.h"
#include "platform/input_injector.h"
#include "platform/secure_store.h"

#include <memory>

namespace tavrel {

/// Fills every service of `deps` that is still empty with the one of this system. The only place that names the
/// concrete classes; one source file per system.
[[nodiscard]] AppController::Deps withDefaultServices(AppController::Deps deps);

[[nodiscard]] std::unique_ptr<platform::IInputMonitor> makeInputMonitor();
/// Null on a system that takes no input from programs.
[[nodiscard]] std::unique_ptr<platform::IInputInjector> makeInputInjector();

/// Where the secrets of the user go; waits for the system, so not for the GUI thread.
[[nodiscard]] std::unique_ptr<platform::ISecureStore> makeSecureStore();

/// Lets the system end the program in its usual order (end of the desktop session, Ctrl+C in a terminal).
void followSystemTermination(QObject *owner);

} // namespace tavrel
