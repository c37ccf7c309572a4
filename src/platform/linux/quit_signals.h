#pragma once

class QObject;

namespace tavrel::platform {

/// Turns SIGTERM, SIGINT and SIGHUP into QCoreApplication::quit(), so that the end of a desktop session takes the
/// program down in its usual order. Call once, from the GUI thread; `owner` keeps what it needs alive.
void quitOnTerminationSignals(QObject *owner);

} // namespace tavrel::platform
