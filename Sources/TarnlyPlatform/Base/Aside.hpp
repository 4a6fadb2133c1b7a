#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <type_traits>
#include <utility>

#include "TarnlyPlatform/Base/StartThread.hpp"

/// For one who waits on a thread, and not for ever. Where there is a loop, see `FileLooks` and `withinLimit`.
namespace tarnly {

/// Has a thread of its own do `work`, which may never come back, as from a mount whose server has gone, or
/// from the system while it looks up a name: nobody waits for that thread, neither the end of the program.
/// What `work` uses it keeps alive itself. Throws `std::runtime_error` where the system starts no more
/// threads.
template <typename Work>
std::future<std::invoke_result_t<Work&>> startAside(Work work) {
    std::packaged_task<std::invoke_result_t<Work&>()> task(std::move(work));
    auto result = task.get_future();
    startThread(std::move(task)).detach();
    return result;
}

/// What the work answers, or throws, within `limit`; absent where it takes longer.
template <typename Result>
std::optional<Result> answerOf(std::future<Result>& work, std::chrono::milliseconds limit) {
    if (work.wait_for(limit) != std::future_status::ready) return std::nullopt;
    return work.get();
}

/// `work` aside, for `limit` at most. Throws what both do.
template <typename Work>
auto aside(std::chrono::milliseconds limit, Work work) {
    auto answer = startAside(std::move(work));
    return answerOf(answer, limit);
}

} // namespace tarnly
