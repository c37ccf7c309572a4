#pragma once

#include <QDeadlineTimer>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tavrel {

/// Threads that take work from one queue. One thread, as usual, does it in the order of run(); several begin it in that
/// order. They start with the first work there is for them and wait for more until the queue goes.
///
/// Destruction drops what has not begun and waits for what has, without end. Where work may hang, on a network folder
/// say, the queue is never destroyed: finish() waits for it up to a deadline, and the end of the process cuts off the
/// rest. Work must not throw, and must not be the end of the queue. All functions but destruction: any thread.
///
/// Standard threads, since one of Qt's opens descriptors for an event loop that nobody runs here, and ends the program
/// when there are none left.
class WorkQueue final
{
public:
    explicit WorkQueue(int threads = 1);
    ~WorkQueue();
    WorkQueue(const WorkQueue &) = delete;
    WorkQueue &operator=(const WorkQueue &) = delete;

    /// What `work` holds is destroyed on its thread as soon as it is done, on that of the destructor when it is
    /// dropped. When the system has no thread for the first work, it waits until a later call finds one.
    void run(std::function<void()> work);
    /// Runs it at once, or not at all when every thread is busy.
    [[nodiscard]] bool tryRun(const std::function<void()> &work);
    /// Waits until everything has been done; false when the deadline comes first, and it goes on. Not from its work.
    [[nodiscard]] bool finish(QDeadlineTimer deadline);
    [[nodiscard]] int threadCount() const { return m_threadCount; }

private:
    bool startThread();
    void takeWork();

    const int m_threadCount;
    std::mutex m_mutex;
    // All below under the mutex.
    std::condition_variable m_wake;
    std::condition_variable m_done;
    std::deque<std::function<void()>> m_waiting;
    std::vector<std::thread> m_threads;
    std::size_t m_idle = 0;
    std::size_t m_running = 0; ///< pieces of work
    bool m_isEnding = false;
};

} // namespace tavrel
