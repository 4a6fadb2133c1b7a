#include "TarnlyPlatform/Base/LoopWatch.hpp"

#ifdef TARNLY_LOOP_WATCH

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/ThreadUse.hpp"

namespace tarnly {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;
constexpr Milliseconds longTurn{1};

struct Moment {
    std::chrono::steady_clock::time_point time = std::chrono::steady_clock::now();
    ThreadUse use = threadUse();
};

/// One turn of the loop.
struct Turn {
    std::optional<Moment> begin;
    const char* about = "something that has no name";
};

thread_local Turn* present = nullptr;

/// A turn that may have begun with waiting for an event has no beginning until it is noted what it is about.
class Watch {
  public:
    explicit Watch(std::FILE* file) : file_(file) {}

    void run(boost::asio::io_context& loop) {
        bool goesOn = true;
        while (goesOn) {
            goesOn = turn([&] { return loop.poll_one() > 0; }, true) ||
                     turn([&] { return loop.run_one() > 0; }, false);
        }
    }

  private:
    struct Forget {
        Forget() = default;
        Forget(const Forget&) = delete;
        Forget& operator=(const Forget&) = delete;
        ~Forget() { present = nullptr; }
    };

    template <typename Run>
    bool turn(const Run& run, bool isReady) {
        Turn turn;
        if (isReady) turn.begin.emplace();
        present = &turn;
        const Forget forget; // a handler may throw
        const bool hasRun = run();
        if (hasRun && turn.begin) judge(turn);
        return hasRun;
    }

    void judge(const Turn& turn) {
        const Moment end;
        const Milliseconds whole = end.time - turn.begin->time;
        const Milliseconds processor = end.use.processor - turn.begin->use.processor;
        const bool hasWaited = end.use.waits > turn.begin->use.waits;
        if (processor <= longTurn && (whole <= longTurn || !hasWaited)) return;
        std::fprintf(file_, "%.2f ms, %.2f on the processor: %s\n", whole.count(), processor.count(),
                     turn.about);
        std::fflush(file_);
    }

    std::FILE* file_;
};

} // namespace

void LoopWatch::run(boost::asio::io_context& loop) {
    const char* path = std::getenv("TARNLY_LOOP_WATCH");
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    const std::unique_ptr<std::FILE, Close> file(path == nullptr ? nullptr : std::fopen(path, "a"));
    if (file) {
        Watch(file.get()).run(loop);
    } else {
        loop.run();
    }
}

void LoopWatch::note(const char* what) {
    if (present == nullptr) return;
    if (!present->begin) present->begin.emplace();
    present->about = what;
}

} // namespace tarnly

#endif
