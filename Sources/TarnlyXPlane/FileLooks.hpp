#pragma once

#include <algorithm>
#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// Looks at files and folders whose disk may never answer, as a mount does whose server has gone.
///
/// Each look has a thread of its own. One that hangs holds up whoever asks for the same path, and nothing
/// else: neither the end of this object nor that of the program waits for it. Belongs to the network thread;
/// what is said of coroutines that are told to end holds for `at`.
template <typename Result>
class FileLooks {
  public:
    /// Blocks; called from any thread, and perhaps not back when all else has gone.
    using Look = std::function<Result(const std::string& path)>;

    /// So many looks hang at most in one folder, and in all; who comes later waits until one does not. A
    /// folder that answers is looked into however many hang in others, of which there are few.
    static constexpr std::size_t sideBySide = 8;
    static constexpr std::size_t inAll = 256;

    FileLooks(boost::asio::any_io_executor executor, Look look)
        : state_(std::make_shared<State>(std::move(executor), std::move(look))) {}

    FileLooks(const FileLooks&) = delete;
    FileLooks& operator=(const FileLooks&) = delete;
    ~FileLooks() { close(); }

    /// What a look at `path` that began after this call finds, or throws, however long it takes: limit it.
    /// One look at a time at each path; those who wait for one share the next.
    Task<Result> at(std::string path) { return wait(state_, std::move(path)); }

    /// What is found from now on is nobody's. To be called before the executor goes.
    void close() {
        state_->mailbox->with([](auto& executor) { executor.reset(); });
    }

  private:
    struct UnderWay {
        /// Of the call that began it.
        std::uint64_t number;
        std::optional<Result> found{};
        std::exception_ptr failure{};

        bool isDone() const { return found || failure; }
    };
    /// Where threads deliver what they have found, as long as somebody is there.
    using Mailbox = Guarded<std::optional<boost::asio::any_io_executor>>;

    struct State {
        State(boost::asio::any_io_executor executor, Look howToLook)
            : look(std::move(howToLook)),
              changed(executor),
              mailbox(std::make_shared<Mailbox>(std::move(executor))) {}

        OnOneThread thread;
        const Look look;
        Event changed;
        const std::shared_ptr<Mailbox> mailbox;
        std::uint64_t calls = 0;
        std::map<std::string, std::shared_ptr<UnderWay>> underWay;

        bool hasRoomFor(const std::string& path) const {
            const auto isBeside = [folder = folderOf(path)](const auto& entry) {
                return folderOf(entry.first) == folder;
            };
            return underWay.size() < inAll &&
                   static_cast<std::size_t>(std::ranges::count_if(underWay, isBeside)) < sideBySide;
        }
    };

    static std::string_view folderOf(std::string_view path) {
        const auto stroke = path.rfind('/');
        return path.substr(0, stroke == std::string_view::npos ? 0 : stroke);
    }

    static Task<Result> wait(std::shared_ptr<State> state, std::string path) {
        state->thread.check();
        const auto call = ++state->calls;
        auto mine = lookSince(state, path, call);
        while (!mine) {
            co_await state->changed.wait();
            mine = lookSince(state, path, call);
        }
        while (!mine->isDone()) {
            co_await state->changed.wait();
        }
        if (mine->failure) std::rethrow_exception(mine->failure);
        co_return *mine->found;
    }

    /// The look that `call` may share or has begun; null while there can be none.
    static std::shared_ptr<UnderWay> lookSince(const std::shared_ptr<State>& state, const std::string& path,
                                               std::uint64_t call) {
        const auto present = state->underWay.find(path);
        if (present != state->underWay.end()) {
            return present->second->number >= call ? present->second : nullptr;
        }
        if (!state->hasRoomFor(path)) return nullptr;
        auto begun = std::make_shared<UnderWay>(UnderWay{state->calls});
        const auto entry = state->underWay.emplace(path, begun).first;
        try {
            start(state, path, begun);
        } catch (...) {
            state->underWay.erase(entry);
            throw;
        }
        return begun;
    }

    /// What a thread brings. Made before there is the thread, which holds nothing of the network thread's.
    struct Delivery {
        std::string path;
        std::weak_ptr<State> to;
        std::weak_ptr<UnderWay> of;
        std::optional<Result> found{};
        std::exception_ptr failure{};

        void arrive() {
            const auto alive = to.lock();
            const auto awaited = of.lock();
            if (!alive || !awaited) return;
            awaited->found = std::move(found);
            awaited->failure = failure;
            alive->underWay.erase(path);
            alive->changed.notifyAll();
        }
    };

    static void start(const std::shared_ptr<State>& state, const std::string& path,
                      const std::shared_ptr<UnderWay>& begun) {
        auto delivery = std::make_shared<Delivery>(Delivery{path, state, begun});
        auto run = [look = state->look, delivery, mailbox = state->mailbox] {
            try {
                delivery->found = look(delivery->path);
            } catch (...) {
                delivery->failure = std::current_exception();
            }
            while (!isPosted(*mailbox, delivery))
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
        };
        std::thread(std::move(run)).detach();
    }

    /// False for lack of memory.
    static bool isPosted(Mailbox& mailbox, const std::shared_ptr<Delivery>& delivery) noexcept {
        try {
            mailbox.with([&](auto& executor) {
                if (executor) boost::asio::post(*executor, [delivery] { delivery->arrive(); });
            });
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    const std::shared_ptr<State> state_;
};

} // namespace tarnly
