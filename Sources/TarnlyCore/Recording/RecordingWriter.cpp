#include "TarnlyCore/Recording/RecordingWriter.hpp"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <variant>

#include "TarnlyCore/Recording/DiskWatch.hpp"
#include "TarnlyPlatform/Base/StartThread.hpp"

namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// How long the end of the program waits for a disk.
constexpr auto endPatience = std::chrono::seconds(10);

/// After so long it says that it waits.
constexpr auto quietPatience = std::chrono::seconds(1);

/// How many logs of earlier recordings may wait for a disk; more would take too much memory.
constexpr std::size_t mostWaiting = 4;

/// How often, and how long after each other, a step is tried for which there is no memory.
constexpr int mostAttempts = 10;
constexpr auto attemptPause = std::chrono::milliseconds(100);

struct Begin {
    std::filesystem::path file;
    RecordingWriter::SharedAccount account;
};
struct End {};
struct Notify {
    std::function<void()> done;
};
struct LetGo {
    std::shared_ptr<const void> memory;
};
using Order = std::variant<Begin, RecordingWriter::Batch, End, Notify, LetGo>;

} // namespace

/// What the two sides share, and what the thread does.
class RecordingWriter::Room {
  public:
    Room(OpenLog openLog, Tell tell, Pauses pauses)
        : watch_(std::make_shared<DiskWatch>(pauses.hang)),
          openLog_(watch_->watched(std::move(openLog))),
          tell_(std::move(tell)),
          pauses_(pauses) {}

    void hand(Order order) {
        const std::lock_guard lock(mutex_);
        orders_.push_back(std::move(order));
        changed_.notify_all();
    }

    /// Has the thread end when all is done; says whether it has within `endPatience`.
    bool finish() {
        std::unique_lock lock(mutex_);
        isClosing_ = true;
        changed_.notify_all();
        const auto hasEnded = [&] { return hasEnded_; };
        if (changed_.wait_for(lock, quietPatience, hasEnded)) return true;
        tell_("Waiting for the disk to take the recording, for ten seconds at most.");
        if (changed_.wait_for(lock, endPatience - quietPatience, hasEnded)) return true;
        tell_("The disk has not taken the recording: what was recorded last is lost.");
        return false;
    }

    std::vector<Phrase> problemsOfEarlier() const { return problemsOfEarlier_.copy(); }

    Phrase hang() {
        const auto log = watch_->hanging();
        if (!log) return {};
        auto text = LogInProgress::problemText(*log, Phrase::of("the disk does not answer"),
                                               Phrase::of("Look after the disk"));
        const auto before = toldHang_.with([&](auto& told) { return std::exchange(told, log); });
        if (!before) tell_(text.text());
        return text;
    }

    /// The thread.
    void run() {
        while (next()) {
            for (auto& order : taken_)
                persist([&] { std::visit([&](auto& known) { carryOut(known); }, order); });
            attempt([this] { workOn(LogInProgress::Patience::pauses); });
            attempt([this] { tellOfReturn(); });
        }
        attempt([this] { finishLogs(); });
        attempt([this] { tellOfReturn(); });
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        changed_.notify_all();
    }

  private:
    /// Takes all that waits, which is nothing when it is time to look after a log; false at the end.
    bool next() {
        taken_.clear();
        const auto due = nextDue();
        std::unique_lock lock(mutex_);
        const auto isAwake = [&] { return isClosing_ || !orders_.empty(); };
        if (due) {
            changed_.wait_until(lock, *due, isAwake);
        } else {
            changed_.wait(lock, isAwake);
        }
        if (isClosing_ && orders_.empty()) return false;
        taken_.swap(orders_); // which needs no memory
        return true;
    }

    std::optional<SteadyClock::time_point> nextDue() const {
        std::optional<SteadyClock::time_point> earliest;
        for (const auto& log : logs_) {
            const auto due = log.due();
            if (due && (!earliest || *due < *earliest)) earliest = due;
        }
        return earliest;
    }

    /// Once what has waited for the disk is written as well.
    void tellOfReturn() {
        if (watch_->hanging() || hasOrders()) return;
        const auto log = toldHang_.with([](auto& told) { return std::exchange(told, std::nullopt); });
        const auto isInTrouble = [](const LogInProgress& one) { return !one.problem().empty(); };
        if (log && std::ranges::none_of(logs_, isInTrouble)) tell_(LogInProgress::recoveredText(*log));
    }

    bool hasOrders() {
        const std::lock_guard lock(mutex_);
        return !orders_.empty();
    }

    /// Once more, and again, where there was no memory: a step that fails has done nothing. What fails on and
    /// on is lost alone, and ends neither thread nor program.
    static void persist(const auto& step) {
        for (int times = 0; times < mostAttempts; ++times) {
            try {
                return step();
            } catch (const std::exception&) {
                std::this_thread::sleep_for(attemptPause);
            }
        }
    }

    static void attempt(const auto& step) {
        try {
            step();
        } catch (const std::exception&) {
        }
    }

    void carryOut(Begin& order) {
        carryOut(End());
        // The one before is written before this one has its file.
        attempt([this] { workOn(LogInProgress::Patience::none); });
        while (logs_.size() > mostWaiting) {
            logs_.front().giveUp();
            logs_.pop_front();
        }
        logs_.emplace_back(openLog_, order.file, order.account, pauses_, tell_);
        attempt([this] { logs_.back().write(SteadyClock::now()); }); // else it is tried again as for a disk
    }
    void carryOut(RecordingWriter::Batch& order) {
        if (!logs_.empty()) logs_.back().add(order);
    }
    void carryOut(const End& /*order*/) {
        if (!logs_.empty()) logs_.back().end();
    }
    void carryOut(const Notify& order) {
        attempt([this] { writeLogs(LogInProgress::Patience::none); });
        order.done(); // somebody waits for it
    }
    void carryOut(LetGo& order) { order.memory.reset(); }

    void writeLogs(LogInProgress::Patience patience) {
        for (auto& log : logs_)
            persist([&] { log.write(SteadyClock::now(), patience); });
        tellOfEarlier();
    }

    /// Who waits for a recording's end has been answered by now.
    void workOn(LogInProgress::Patience patience) {
        writeLogs(patience);
        for (auto& log : logs_)
            attempt([&] { log.flushWhenDue(SteadyClock::now(), patience); });
        std::erase_if(logs_, [](const LogInProgress& log) { return log.isWhole(); });
        tellOfEarlier();
    }

    void tellOfEarlier() {
        std::vector<Phrase> problems;
        for (const auto& log : logs_) {
            auto problem = log.isEnding() ? log.problem() : Phrase();
            if (!problem.empty()) problems.push_back(std::move(problem));
        }
        problemsOfEarlier_.with([&](auto& told) { told.swap(problems); });
    }

    void finishLogs() {
        carryOut(End());
        attempt([this] { workOn(LogInProgress::Patience::none); });
        for (auto& log : logs_)
            log.giveUp();
        logs_.clear();
    }

    // Constant after construction
    const std::shared_ptr<DiskWatch> watch_;
    const OpenLog openLog_;
    const Tell tell_;
    const Pauses pauses_;

    /// The thread's own: those that wait for their disk, the oldest first, and the running one.
    std::list<LogInProgress> logs_;
    std::deque<Order> taken_;

    Guarded<std::vector<Phrase>> problemsOfEarlier_;
    /// The log of a call that hangs, once that has been told.
    Guarded<std::optional<std::filesystem::path>> toldHang_;

    // State below is protected by the mutex
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Order> orders_;
    bool isClosing_ = false;
    bool hasEnded_ = false;
};

RecordingWriter::RecordingWriter(OpenLog openLog, Tell tell, Pauses pauses)
    : room_(std::make_shared<Room>(std::move(openLog), std::move(tell), pauses)),
      thread_(startThread([room = room_] { room->run(); })) {}

bool RecordingWriter::finish() { return room_->finish(); }

RecordingWriter::~RecordingWriter() {
    if (finish()) {
        thread_.join();
    } else {
        thread_.detach();
    }
}

void RecordingWriter::begin(std::filesystem::path file, SharedAccount account) {
    room_->hand(Begin{std::move(file), std::move(account)});
}

void RecordingWriter::write(Batch batch) { room_->hand(std::move(batch)); }

void RecordingWriter::end() { room_->hand(End{}); }

void RecordingWriter::notify(std::function<void()> done) { room_->hand(Notify{std::move(done)}); }

std::vector<Phrase> RecordingWriter::problemsOfEarlier() const { return room_->problemsOfEarlier(); }

Phrase RecordingWriter::hang() const { return room_->hang(); }

void RecordingWriter::letGo(std::shared_ptr<const void> memory) { room_->hand(LetGo{std::move(memory)}); }

} // namespace tarnly
