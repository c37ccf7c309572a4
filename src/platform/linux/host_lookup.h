#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace tavrel::platform {

/// Tells whether a host has an address, and never holds the program for it.
///
/// Qt looks names up on threads that the end of the program waits for: 10 s and more when the name server does not
/// answer. Here each lookup has a thread that nobody waits for; a host found here is soon found there as well.
class HostLookup final
{
public:
    HostLookup();
    /// Lookups that run have no answer any more.
    ~HostLookup();
    HostLookup(const HostLookup &) = delete;
    HostLookup &operator=(const HostLookup &) = delete;

    /// The answer comes later, on the thread of this object.
    void find(const QString &host, const std::function<void(bool found)> &done);

private:
    struct Answers;
    std::shared_ptr<Answers> m_answers;
};

} // namespace tavrel::platform
