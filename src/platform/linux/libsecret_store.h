#pragma once

#include "platform/secret_file.h"
#include "platform/secure_store.h"

#include <QDeadlineTimer>

#include <chrono>
#include <mutex>

namespace tavrel::platform {

struct SecretReply;
struct SecretTask;

/// Secrets in the Secret Service of the desktop (its keyring), or where there is none, or it is locked or stuck, in a
/// file that only the user may read. The first time that happens the log says so.
///
/// The file holds only what the service could not be told: an entry there is newer than what the service may have under
/// its key, and moves into the service with the next call for that key that reaches it.
///
/// Any thread. A call may wait for its whole deadline, so none belongs on the GUI thread.
class LibsecretStore final : public ISecureStore
{
public:
    struct Options
    {
        QString file;                                   ///< see SecretFile
        std::chrono::milliseconds deadline{1500};       ///< of one call
        std::chrono::milliseconds restAfterHang{30000}; ///< how long a service is left alone that did not answer
    };

    LibsecretStore() : LibsecretStore(Options()) {}
    explicit LibsecretStore(const Options &options);

    bool save(const QString &key, const QByteArray &value) override;
    bool load(const QString &key, QByteArray *value) override;
    /// True when the value is gone or will not come back: with the service out of reach that is remembered.
    bool remove(const QString &key) override;

private:
    [[nodiscard]] SecretReply ask(const SecretTask &task, QDeadlineTimer deadline);
    void tellOfFile(const QString &problem);

    std::mutex m_mutex;
    const Options m_options;
    SecretFile m_file;
    QDeadlineTimer m_rest;
    bool m_isTold = false;
};

} // namespace tavrel::platform
