#include "platform/linux/libsecret_store.h"

#include "platform/linux/secret_service.h"

#include <QDir>
#include <QLoggingCategory>

namespace tavrel::platform {
namespace {

using Kind = SecretTask::Kind;
using Outcome = SecretReply::Outcome;

bool isReached(const SecretReply &reply)
{
    return reply.outcome == Outcome::Done || reply.outcome == Outcome::NotFound;
}

} // namespace

LibsecretStore::LibsecretStore(const Options &options) : m_options(options), m_file(options.file) {}

bool LibsecretStore::save(const QString &key, const QByteArray &value)
{
    const QDeadlineTimer deadline(m_options.deadline);
    const std::scoped_lock lock(m_mutex);
    const SecretReply reply = ask({Kind::Save, key, value}, deadline);
    if (reply.outcome == Outcome::Done)
        return m_file.erase(key);
    tellOfFile(reply.problem);
    return m_file.put(key, {.isRemoved = false, .value = value});
}

bool LibsecretStore::load(const QString &key, QByteArray *value)
{
    const QDeadlineTimer deadline(m_options.deadline);
    const std::scoped_lock lock(m_mutex);
    const auto kept = m_file.find(key);
    if (!kept) {
        const SecretReply reply = ask({Kind::Load, key, {}}, deadline);
        if (reply.outcome == Outcome::Done && value)
            *value = reply.value;
        return reply.outcome == Outcome::Done;
    }
    const SecretReply reply = ask({kept->isRemoved ? Kind::Remove : Kind::Save, key, kept->value}, deadline);
    if (isReached(reply))
        m_file.erase(key);
    if (!kept->isRemoved && value)
        *value = kept->value;
    return !kept->isRemoved;
}

bool LibsecretStore::remove(const QString &key)
{
    const QDeadlineTimer deadline(m_options.deadline);
    const std::scoped_lock lock(m_mutex);
    const SecretReply reply = ask({Kind::Remove, key, {}}, deadline);
    if (isReached(reply))
        return m_file.erase(key);
    tellOfFile(reply.problem);
    return m_file.put(key, {.isRemoved = true, .value = {}});
}

SecretReply LibsecretStore::ask(const SecretTask &task, QDeadlineTimer deadline)
{
    if (!m_rest.hasExpired())
        return {.outcome = Outcome::Unavailable, .value = {}, .problem = QStringLiteral("no answer lately")};
    SecretReply reply = askSecretService(task, deadline);
    if (reply.outcome == Outcome::TimedOut)
        m_rest.setRemainingTime(m_options.restAfterHang);
    return reply;
}

void LibsecretStore::tellOfFile(const QString &problem)
{
    if (std::exchange(m_isTold, true))
        return;
    qWarning().noquote() << QStringLiteral("密钥服务不可用（%1），凭据改存在只有本人可读的文件 %2")
                                .arg(problem, QDir::toNativeSeparators(m_file.path()));
}

} // namespace tavrel::platform
