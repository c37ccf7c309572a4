#pragma once

#include <QByteArray>
#include <QProcess>
#include <QTemporaryDir>

namespace tavrel::test {

/// A message bus of its own, at an address that stays the same over restarts. It is the session bus of this process
/// and of all it starts, until it goes.
class PrivateBus final
{
public:
    enum class Kind {
        Bare,   ///< starts nothing
        Session ///< starts the services of the system
    };

    explicit PrivateBus(Kind kind);
    ~PrivateBus();
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    bool start();
    void stop();
    /// Stops the process in its tracks, as a debugger does, or lets it go on.
    void setFrozen(bool frozen);

private:
    QTemporaryDir m_dir;
    Kind m_kind;
    QProcess m_daemon;
};

/// SIGSTOP and SIGCONT.
void setFrozen(const QProcess &process, bool frozen);

} // namespace tavrel::test
