#include "platform/linux/host_lookup.h"

#include <QMetaObject>
#include <QObject>
#include <QUrl>

#include <mutex>
#include <netdb.h>
#include <system_error>
#include <thread>
#include <utility>

namespace tavrel::platform {
namespace {

bool hasAddress(const QByteArray &host)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const bool isFound = ::getaddrinfo(host.constData(), nullptr, &hints, &found) == 0;
    if (isFound)
        ::freeaddrinfo(found);
    return isFound;
}

} // namespace

/// Brings answers back to the thread of the lookup for as long as it lives.
struct HostLookup::Answers
{
    std::mutex mutex;
    QObject *receiver = nullptr; ///< null once the lookup is gone

    void tell(const std::function<void(bool)> &done, bool found)
    {
        const std::scoped_lock lock(mutex);
        if (receiver)
            QMetaObject::invokeMethod(
                receiver, [done, found] { done(found); }, Qt::QueuedConnection);
    }
};

HostLookup::HostLookup() : m_answers(std::make_shared<Answers>())
{
    m_answers->receiver = new QObject;
}

HostLookup::~HostLookup()
{
    const std::scoped_lock lock(m_answers->mutex);
    delete std::exchange(m_answers->receiver, nullptr);
}

void HostLookup::find(const QString &host, const std::function<void(bool)> &done)
{
    const QByteArray name = QUrl::toAce(host).isEmpty() ? host.toUtf8() : QUrl::toAce(host);
    try {
        std::thread([name, done, answers = m_answers] { answers->tell(done, hasAddress(name)); }).detach();
    } catch (const std::system_error &) {
        m_answers->tell(done, false);
    }
}

} // namespace tavrel::platform
