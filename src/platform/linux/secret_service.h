#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

namespace tavrel::platform {

struct SecretTask
{
    enum class Kind { Save, Load, Remove };
    Kind kind = Kind::Load;
    QString key;
    QByteArray value; ///< to be saved
};

struct SecretReply
{
    enum class Outcome {
        Done,
        NotFound,    ///< there is a service and it has no such key
        Unavailable, ///< no bus, no service, locked, or an error of the service
        TimedOut
    };
    Outcome outcome = Outcome::Unavailable;
    QByteArray value; ///< what was loaded
    QString problem;  ///< for the log
};

/// Carries out one task with the Secret Service of the session bus.
///
/// The service is never allowed to ask the user: what it will not do without that counts as locked. The talk has a
/// thread of its own, which is given up at the deadline and neither felt nor waited for afterwards, not at the end of
/// the program either. Any thread.
[[nodiscard]] SecretReply askSecretService(const SecretTask &task, QDeadlineTimer deadline);

} // namespace tavrel::platform
