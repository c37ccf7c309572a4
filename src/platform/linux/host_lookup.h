#pragma once

#include "base/answer.h"

#include <QString>

#include <functional>

namespace tavrel::platform {

/// Tells whether a host has an address, and never holds the program for it.
///
/// Qt looks names up on threads that the end of the program waits for: 10 s and more when the name server does not
/// answer. Here each lookup has a thread that nobody waits for; a host found here is soon found there as well.
class HostLookup final
{
public:
    /// The answer comes later, on the thread of this object and as long as it lives.
    void find(const QString &host, const std::function<void(bool found)> &done);

private:
    Answers m_answers;
};

} // namespace tavrel::platform
