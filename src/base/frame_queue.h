#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace tavrel {

/// Frames on their way from one thread to the next, in order: a bounded queue with an end.
///
/// A full queue either drops the frame that comes, for a source that cannot wait (a screen, a camera), or makes its
/// sender wait, for one that can (a decoder). Any number of threads at either end. Frames that are dropped are
/// destroyed on the thread of the call, without the lock. Nobody may be waiting in it when it is destroyed: stop() and
/// join.
template <typename Frame>
class FrameQueue final
{
public:
    enum class WhenFull { DropNewest, Block };
    enum class Pushed {
        Taken,
        Dropped, ///< there was no room; counted
        Ended    ///< after close() or stop(): no more frames are wanted. Not counted
    };

    /// capacity  frames, at least 1
    FrameQueue(std::size_t capacity, WhenFull whenFull) : m_capacity(capacity), m_whenFull(whenFull) {}
    FrameQueue(const FrameQueue &) = delete;
    FrameQueue &operator=(const FrameQueue &) = delete;

    [[nodiscard]] Pushed push(Frame frame)
    {
        std::unique_lock lock(m_mutex);
        if (m_whenFull == WhenFull::Block)
            m_roomCame.wait(lock, [this] { return m_isClosed || m_frames.size() < m_capacity; });
        if (m_isClosed)
            return Pushed::Ended;
        if (m_frames.size() >= m_capacity) {
            ++m_drops;
            return Pushed::Dropped;
        }
        m_frames.push_back(std::move(frame));
        m_frameCame.notify_one();
        return Pushed::Taken;
    }

    /// The oldest frame, waited for; nothing once there will be none any more.
    [[nodiscard]] std::optional<Frame> pop()
    {
        std::unique_lock lock(m_mutex);
        m_frameCame.wait(lock, [this] { return m_isClosed || !m_frames.empty(); });
        if (m_frames.empty())
            return std::nullopt;
        std::optional<Frame> frame = std::move(m_frames.front());
        m_frames.pop_front();
        m_roomCame.notify_one();
        return frame;
    }

    /// The end of the frames: those that are there still come out. Wakes both ends; a push() that waits is refused.
    void close()
    {
        const std::lock_guard lock(m_mutex);
        endFrames();
    }

    /// The end at once: drops what is there and closes. Those frames are not counted as drops.
    void stop()
    {
        std::deque<Frame> unwanted;
        const std::lock_guard lock(m_mutex);
        unwanted.swap(m_frames);
        endFrames();
    }

    /// How many frames found no room.
    [[nodiscard]] std::size_t drops() const
    {
        const std::lock_guard lock(m_mutex);
        return m_drops;
    }

private:
    void endFrames()
    {
        m_isClosed = true;
        m_frameCame.notify_all();
        m_roomCame.notify_all();
    }

    const std::size_t m_capacity;
    const WhenFull m_whenFull;
    mutable std::mutex m_mutex;
    // All below under the mutex.
    std::condition_variable m_frameCame;
    std::condition_variable m_roomCame;
    std::deque<Frame> m_frames;
    std::size_t m_drops = 0;
    bool m_isClosed = false;
};

} // namespace tavrel
