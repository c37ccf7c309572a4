#pragma once

#include <QDeadlineTimer>

#include <chrono>
#include <future>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>

namespace tavrel {

// For calls that may never return: to a bus whose owner is stopped, to a name server that does not answer. Nobody joins
// the thread, and the end of the process cuts it off in the middle; so the work owns all it touches (values and shared
// pointers), and its end is nobody's loss. An answer goes home by an AnswerHandle, or is waited for with resultBy().

/// Runs `work` on a thread of its own. False: there is no thread to be had, nothing was run.
template <typename Work>
[[nodiscard]] bool runUnjoined(Work work)
{
    try {
        std::thread(std::move(work)).detach();
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

/// The same with a result, which is dropped when nobody has waited for it. Not valid() without a thread.
template <typename Work>
[[nodiscard]] std::future<std::invoke_result_t<Work>> startUnjoined(Work work)
{
    std::promise<std::invoke_result_t<Work>> promise;
    auto result = promise.get_future();
    const bool runs =
        runUnjoined([promise = std::move(promise), work = std::move(work)]() mutable { promise.set_value(work()); });
    return runs ? std::move(result) : std::future<std::invoke_result_t<Work>>();
}

/// Waits for a valid result; nothing when the deadline comes first. The work goes on unheard then.
template <typename Result>
[[nodiscard]] std::optional<Result> resultBy(QDeadlineTimer deadline, std::future<Result> &result)
{
    if (!deadline.isForever() &&
        result.wait_until(deadline.deadline<std::chrono::steady_clock>()) != std::future_status::ready)
        return std::nullopt;
    return result.get();
}

} // namespace tavrel
