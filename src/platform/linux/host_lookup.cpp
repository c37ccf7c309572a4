#include "platform/linux/host_lookup.h"

#include "base/unjoined_thread.h"

#include <QUrl>

#include <netdb.h>

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

void HostLookup::find(const QString &host, const std::function<void(bool)> &done)
{
    const QByteArray name = QUrl::toAce(host).isEmpty() ? host.toUtf8() : QUrl::toAce(host);
    const AnswerHandle answer = m_answers.handle();
    const auto tell = [done, answer](bool found) { answer.post([done, found] { done(found); }); };
    if (!runUnjoined([name, tell] { tell(hasAddress(name)); }))
        tell(false);
}

} // namespace tavrel::platform
