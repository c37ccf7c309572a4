#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace tavrel {

/// Work that is done once, by whoever comes first, with a result for all: usually on a worker, but where the result is
/// needed before a worker has begun, there and then. The work runs without the lock, must not throw, and goes with what
/// it holds as soon as it is done. Any thread; shared by a std::shared_ptr.
template <typename Result>
class ClaimedWork final
{
public:
    explicit ClaimedWork(std::function<Result()> work) : m_work(std::move(work)) {}
    /// Done already.
    explicit ClaimedWork(Result result) : m_result(std::move(result)) {}
    ClaimedWork(const ClaimedWork &) = delete;
    ClaimedWork &operator=(const ClaimedWork &) = delete;

    /// Does it. False when somebody else has begun.
    bool tryDo()
    {
        std::function<Result()> work;
        {
            const std::lock_guard lock(m_mutex);
            work = std::exchange(m_work, {});
        }
        if (!work)
            return false;
        Result made = work();
        work = {};
        const std::lock_guard lock(m_mutex);
        m_result = std::move(made);
        m_isDone.notify_all();
        return true;
    }

    /// Does it if nobody has begun, else waits for it. Valid as long as this object.
    const Result &result()
    {
        tryDo();
        std::unique_lock lock(m_mutex);
        m_isDone.wait(lock, [this] { return m_result.has_value(); });
        return *m_result;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_isDone;
    std::function<Result()> m_work; ///< under the mutex: empty once somebody has it
    std::optional<Result> m_result; ///< under the mutex; does not change any more
};

} // namespace tavrel
