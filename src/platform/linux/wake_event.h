#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace tavrel::platform {

// What wakes a thread that waits for a descriptor: an eventfd, made with EFD_NONBLOCK.

inline void signalEvent(int descriptor)
{
    const quint64 one = 1;
    // Fails only when the counter is full, and then the descriptor is readable anyway.
    [[maybe_unused]] const ssize_t written = ::write(descriptor, &one, sizeof one);
}

inline void clearEvent(int descriptor)
{
    quint64 count = 0;
    [[maybe_unused]] const ssize_t got = ::read(descriptor, &count, sizeof count);
}

} // namespace tavrel::platform
