#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace tavrel {

/// Calls work(0) to work(count - 1), each once, on as many threads as there are cores and calls, and returns when all
/// are done. The calling thread works along. Starting a thread costs some 20 us; `work` must not throw.
template <typename Work>
void inParallel(std::size_t count, const Work &work)
{
    constexpr unsigned kMostThreads = 8;
    const std::size_t cores = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
    std::atomic<std::size_t> next = 0;
    const auto run = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> helpers;
    for (std::size_t i = 1; i < std::min(cores, count); ++i)
        helpers.emplace_back(run);
    run();
    for (std::thread &helper : helpers)
        helper.join();
}

} // namespace tavrel
