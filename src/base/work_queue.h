#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

class QThread;

namespace tavrel {

/// Threads that take work from one queue. One thread, as usual, does it in the order of run(); several begin it in that
/// order. They start with the first work there is for them and wait for more until the queue goes.
///
/// Destruction drops what has not begun and waits for what has, without end. Where work may hang, on a network folder
/// say, the queue is never destroyed: finish() waits for it up to a deadline, and the end of the process cuts off the
/// rest. Work must not throw, and must not be the end of the queue. All functions but destruction: any thread.
class WorkQueue final
{
public:
    /// threadName  as debuggers and system monitors show it; the system may cut it after 15 letters
    explicit WorkQueue(const QString &threadName, int threads = 1);
    ~WorkQueue();
    WorkQueue(const WorkQueue &) = delete;
    WorkQueue &operator=(const WorkQueue &) = delete;

    /// What `work` holds is destroyed on its thread as soon as it is done, on that of the destructor when it is
    /// dropped.
    void run(std::function<void()> work);
    /// Runs it at once, or not at all when every thread is busy.
    [[nodiscard]] bool tryRun(const std::function<void()> &work);
    /// Waits until everything has been done; false when the deadline comes first, and it goes on. Not from its work.
    [[nodiscard]] bool finish(QDeadlineTimer deadline);
    [[nodiscard]] int threadCount() const { return m_threadCount; }

private:
    void add(std::function<void()> work);
    void takeWork();

    const QString m_name;
    const int m_threadCount;
    std::mutex m_mutex;
    // All below under the mutex.
    std::condition_variable m_wake;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_waiting;
    std::vector<std::unique_ptr<QThread>> m_threads;
    std::size_t m_idle = 0;
    std::size_t m_running = 0; ///< pieces of work
    std::size_t m_alive = 0;   ///< threads
    bool m_isEnding = false;
};

} // namespace tavrel
