#include "base/parallel.h"

#include "base/work_queue.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace tavrel {
namespace {

constexpr int kMostHelpers = 7;

/// Calls that several threads take one after the other.
class SharedLoop final
{
public:
    /// `work` is not touched any more once all calls have returned.
    SharedLoop(int count, const std::function<void(int)> &work) : m_count(count), m_work(work) {}

    void takePart()
    {
        std::unique_lock lock(m_mutex);
        while (m_next < m_count) {
            const int i = m_next++;
            lock.unlock();
            m_work(i);
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
    const std::function<void(int)> &m_work;
};

/// Never destroyed: a worker that is still on its way when the process ends may look for it.
WorkQueue &helpers()
{
    static auto *const queue =
        new WorkQueue(std::clamp(static_cast<int>(std::thread::hardware_concurrency()) - 1, 1, kMostHelpers));
    return *queue;
}

} // namespace

void inParallel(int count, const std::function<void(int)> &work, int most)
{
    const int threads = std::min(count, most);
    if (threads < 2) {
        for (int i = 0; i < count; ++i)
            work(i);
        return;
    }
    // A helper that comes late finds nothing left; it keeps the loop until then.
    const auto loop = std::make_shared<SharedLoop>(count, work);
    for (int i = 1; i < threads; ++i) {
        if (!helpers().tryRun([loop] { loop->takePart(); }))
            break;
    }
    loop->takePart();
    loop->wait();
}

} // namespace tavrel
