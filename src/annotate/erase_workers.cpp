#include "annotate/erase_workers.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace tavrel::erase {
namespace {

constexpr int kMostHelpers = 7;

/// Jobs that several threads take one after the other.
class SharedWork final
{
public:
    SharedWork(int count, const std::function<void(int)> &job) : m_count(count), m_job(job) {}

    void takePart()
    {
        std::unique_lock lock(m_mutex);
        while (m_next < m_count) {
            const int i = m_next++;
            lock.unlock();
            m_job(i);
            lock.lock();
            if (++m_done == m_count)
                m_allDone.notify_all();
        }
    }

    void wait()
    {
        std::unique_lock lock(m_mutex);
        m_allDone.wait(lock, [this] { return m_done == m_count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_allDone;
    const int m_count;
    int m_next = 0;
    int m_done = 0;
    const std::function<void(int)> m_job;
};

/// Never destroyed: a solver that is still on its way when the process ends may look for it.
Workers &helpers()
{
    static auto *const workers =
        new Workers(std::clamp(static_cast<int>(std::thread::hardware_concurrency()) - 1, 1, kMostHelpers));
    return *workers;
}

} // namespace

Workers::Workers(int threads) : m_threadCount(threads) {}

Workers::~Workers()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
        m_jobs.clear();
    }
    m_wake.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void Workers::start(std::function<void()> job)
{
    const std::lock_guard lock(m_mutex);
    add(std::move(job));
}

bool Workers::tryStart(const std::function<void()> &job)
{
    const std::lock_guard lock(m_mutex);
    const bool hasIdle = m_idle > static_cast<int>(m_jobs.size());
    if (!hasIdle && static_cast<int>(m_threads.size()) == m_threadCount)
        return false;
    add(job);
    return true;
}

void Workers::add(std::function<void()> job)
{
    m_jobs.push_back(std::move(job));
    if (m_idle < static_cast<int>(m_jobs.size()) && static_cast<int>(m_threads.size()) < m_threadCount)
        m_threads.emplace_back([this] { run(); });
    m_wake.notify_one();
}

void Workers::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_wake.wait(lock, [this] { return m_isEnding || !m_jobs.empty(); });
        --m_idle;
        if (m_isEnding)
            return;
        const std::function<void()> job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        job();
        lock.lock();
    }
}

void inParallel(int count, const std::function<void(int)> &job)
{
    if (count < 2) {
        if (count == 1)
            job(0);
        return;
    }
    // A helper that comes late finds nothing left; it keeps the work until then.
    const auto work = std::make_shared<SharedWork>(count, job);
    for (int i = 0; i < std::min(count - 1, helpers().threadCount()); ++i) {
        if (!helpers().tryStart([work] { work->takePart(); }))
            break;
    }
    work->takePart();
    work->wait();
}

} // namespace tavrel::erase
