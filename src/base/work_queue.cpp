#include "base/work_queue.h"

#include "base/wait_until.h"

#include <QThread>

#include <utility>

namespace tavrel {

WorkQueue::WorkQueue(const QString &threadName, int threads) : m_name(threadName), m_threadCount(threads) {}

WorkQueue::~WorkQueue()
{
    std::deque<std::function<void()>> dropped; // destroyed without the lock
    std::unique_lock lock(m_mutex);
    m_isEnding = true;
    dropped = std::exchange(m_waiting, {});
    m_wake.notify_all();
    m_changed.wait(lock, [this] { return m_alive == 0; });
    lock.unlock();
    for (const auto &thread : m_threads)
        thread->wait(); // for its last steps
}

void WorkQueue::run(std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    add(std::move(work));
}

bool WorkQueue::tryRun(const std::function<void()> &work)
{
    const std::lock_guard lock(m_mutex);
    const bool hasIdle = m_idle > m_waiting.size();
    if (!hasIdle && m_threads.size() == static_cast<std::size_t>(m_threadCount))
        return false;
    add(work);
    return true;
}

bool WorkQueue::finish(QDeadlineTimer deadline)
{
    std::unique_lock lock(m_mutex);
    return waitUntil(m_changed, lock, deadline, [this] { return m_waiting.empty() && m_running == 0; });
}

void WorkQueue::add(std::function<void()> work)
{
    m_waiting.push_back(std::move(work));
    if (m_idle < m_waiting.size() && m_threads.size() < static_cast<std::size_t>(m_threadCount)) {
        QThread *thread = m_threads.emplace_back(QThread::create([this] { takeWork(); })).get();
        thread->setObjectName(m_name);
        ++m_alive;
        thread->start();
    }
    m_wake.notify_one();
}

void WorkQueue::takeWork()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_wake.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        --m_idle;
        if (m_isEnding)
            break;
        std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        ++m_running;
        lock.unlock();
        std::exchange(work, {})();
        lock.lock();
        --m_running;
        m_changed.notify_all();
    }
    --m_alive;
    m_changed.notify_all();
}

} // namespace tavrel
