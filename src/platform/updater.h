#pragma once

#include <QObject>

namespace tavrel::platform {

/// Looks for newer versions of the program.
class IUpdater : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The tray offers a check only when true.
    [[nodiscard]] virtual bool isAvailable() const = 0;
    /// An interactive check with its own user interface.
    virtual void checkNow() = 0;
    [[nodiscard]] virtual bool automaticChecks() const = 0;
    virtual void setAutomaticChecks(bool automatic) = 0;
    /// False while a capture session, a recording or a guide runs: no shutdown is asked for meanwhile.
    virtual void setCanShutdown(bool can) = 0;

Q_SIGNALS:
    /// The application has to quit so that an update can be installed. Emitted from any thread.
    void shutdownRequested();
};

} // namespace tavrel::platform
