#pragma once

#include <QDeadlineTimer>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tavrel {

/// std::condition_variable::wait_until() with a deadline of Qt, which may be for ever: no point of the steady clock is.
template <typename Predicate>
bool waitUntil(std::condition_variable &changed, std::unique_lock<std::mutex> &lock, QDeadlineTimer deadline,
               Predicate isReached)
{
    if (deadline.isForever()) {
        changed.wait(lock, isReached);
        return true;
    }
    return changed.wait_until(lock, deadline.deadline<std::chrono::steady_clock>(), isReached);
}

} // namespace tavrel
