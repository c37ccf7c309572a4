#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tavrel::erase {

/// Threads that wait for jobs. They begin with the first job; going down drops the jobs that have not begun and waits
/// for the others.
class Workers final
{
public:
    explicit Workers(int threads);
    ~Workers();
    Workers(const Workers &) = delete;
    Workers &operator=(const Workers &) = delete;

    /// Runs a job as soon as a thread is free.
    void start(std::function<void()> job);
    /// Runs a job at once, or not at all when every thread is busy.
    [[nodiscard]] bool tryStart(const std::function<void()> &job);
    [[nodiscard]] int threadCount() const { return m_threadCount; }

private:
    void run();
    void add(std::function<void()> job);

    int m_threadCount;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_jobs;
    std::vector<std::thread> m_threads;
    int m_idle = 0;
    bool m_isEnding = false;
};

/// Calls job(0) to job(count - 1), each once, here and on idle helper threads, and returns when all have returned.
void inParallel(int count, const std::function<void(int)> &job);

} // namespace tavrel::erase
