#pragma once

#include "app/app_controller.h"

namespace tavrel {

/// Fills every service of `deps` that is still empty with the one of this system. The only place that names the
/// concrete classes; one source file per system.
[[nodiscard]] AppController::Deps withDefaultServices(AppController::Deps deps);

/// Lets the system end the program in its usual order (end of the desktop session, Ctrl+C in a terminal).
void followSystemTermination(QObject *owner);

} // namespace tavrel
