#include "base/work_queue.h"

#include "base/wait_until.h"

#include <system_error>
#include <utility>

namespace tavrel {

WorkQueue::WorkQueue(int threads) : m_threadCount(threads) {}

WorkQueue::~WorkQueue()
{
    std::deque<std::function<void()>> dropped; // destroyed without the lock
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        dropped = std::exchange(m_waiting, {});
    }
    m_wake.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void WorkQueue::run(std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    m_waiting.push_back(std::move(work));
    if (m_idle < m_waiting.size())
        startThread();
    m_wake.notify_one();
}

bool WorkQueue::tryRun(const std::function<void()> &work)
{
    const std::lock_guard lock(m_mutex);
    if (m_idle <= m_waiting.size() && !startThread())
        return false;
    m_waiting.push_back(work);
    m_wake.notify_one();
    return true;
}

bool WorkQueue::finish(QDeadlineTimer deadline)
{
    std::unique_lock lock(m_mutex);
    return waitUntil(m_done, lock, deadline, [this] { return m_waiting.empty() && m_running == 0; });
}

bool WorkQueue::startThread()
{
    if (m_threads.size() == static_cast<std::size_t>(m_threadCount))
        return false;
    try {
        m_threads.emplace_back([this] { takeWork(); });
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

void WorkQueue::takeWork()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_wake.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        --m_idle;
        if (m_isEnding)
            return;
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        ++m_running;
        lock.unlock();
        std::exchange(work, {})();
        lock.lock();
        --m_running;
        m_done.notify_all();
    }
}

} // namespace tavrel
