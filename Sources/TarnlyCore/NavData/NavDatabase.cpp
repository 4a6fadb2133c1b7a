#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/StartThread.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

/// How often who waits for a disk looks whether it is to go on.
constexpr std::chrono::milliseconds slice{5};

} // namespace

/// What a lookup and its thread share. Protected by the mutex of the room, but for `isOver`.
struct NavDatabase::Lookup::Search {
    std::atomic<bool> isOver = false;
    std::optional<std::string> asked;
    std::optional<NavConnection::Answer> answer;
};

/// What the threads share with the database, which they may outlive.
class NavDatabase::Room {
  public:
    using Search = Lookup::Search;

    Room(std::string path, Warn warn) : path_(std::move(path)), warn_(std::move(warn)) {}

    /// The thread that opens: all at the start, as later the file may have another name, or the process no
    /// handle to spare.
    void open() {
        std::vector<std::unique_ptr<NavConnection>> opened;
        std::exception_ptr failure;
        try {
            while (opened.size() < sideBySide)
                opened.push_back(std::make_unique<NavConnection>(path_));
        } catch (const std::exception&) {
            failure = std::current_exception();
        }
        const std::lock_guard lock(mutex_);
        if (!failure) idle_ = std::move(opened);
        if (!failure) standing_.erase(Fault::unopened);
        openFailure_ = std::move(failure);
        isOpened_ = true;
        changed_.notify_all();
    }

    void awaitOpening(std::chrono::milliseconds limit) {
        std::unique_lock lock(mutex_);
        const bool isInTime = changed_.wait_for(lock, limit, [&] { return isOpened_; });
        if (openFailure_) std::rethrow_exception(openFailure_);
        if (isInTime) return;
        lock.unlock();
        warn(Fault::unopened, Phrase::of("The navigation database %1 has not opened within %2 milliseconds; "
                                         "until it has, its fixes count as not found. Give --nav-db a file "
                                         "on a disk that answers, or load the script again later.",
                                         printable(path_), std::to_string(limit.count())));
    }

    /// A search's thread.
    void serve(Search& search) {
        auto connection = take(search);
        while (auto id = next(search)) {
            NavConnection::Answer answer;
            try {
                answer = connection ? connection->find(*id, search.isOver) : unopened();
            } catch (const std::exception& error) {
                answer = {{}, error.what()};
            }
            const std::lock_guard lock(mutex_);
            search.answer = std::move(answer);
            changed_.notify_all();
        }
        if (!connection) return;
        const std::lock_guard lock(mutex_);
        idle_.push_back(std::move(connection)); // for which there was room
        changed_.notify_all();
    }

    /// What the thread of `search` answers, unless `mayGoOn` says no first.
    template <typename MayGoOn>
    std::optional<NavConnection::Answer> ask(Search& search, std::string id, const MayGoOn& mayGoOn) {
        std::unique_lock lock(mutex_);
        search.asked = std::move(id);
        changed_.notify_all();
        while (!changed_.wait_for(lock, slice, [&] { return search.answer.has_value(); })) {
            lock.unlock();
            if (!mayGoOn()) return std::nullopt;
            lock.lock();
        }
        return std::exchange(search.answer, std::nullopt);
    }

    void end(Search& search) {
        const std::lock_guard lock(mutex_);
        search.isOver = true;
        changed_.notify_all();
    }

    void noteLateness() {
        if (!isOpened()) return;
        warn(Fault::late, Phrase::of("The navigation database %1 took more than 2 seconds for the fixes of a "
                                     "script, of which the rest counts as not found; give --nav-db one with "
                                     "plain tables and indexes, on a disk that answers.",
                                     printable(path_)));
    }

    void noteFailure(const std::string& message) {
        warn(Fault::unreadable,
             Phrase::of("The navigation database %1 cannot be read (%2): fixes of a script that were not "
                        "found may be there. See that --nav-db names the right file and that its disk is "
                        "well, then load the script again.",
                        printable(path_), message));
    }

    void noteInTime() { forget(Fault::late); }
    void noteRead() { forget(Fault::unreadable); }

    std::vector<Phrase> warnings() {
        const std::lock_guard lock(mutex_);
        std::vector<Phrase> all;
        all.reserve(standing_.size());
        for (const auto& [fault, text] : standing_)
            all.push_back(text);
        return all;
    }

  private:
    enum class Fault { unopened, late, unreadable };

    void warn(Fault fault, const Phrase& text) {
        {
            const std::lock_guard lock(mutex_);
            if (fault == Fault::unopened && isOpened_) return; // meanwhile
            standing_[fault] = text;
            if (!told_.insert(fault).second) return;
        }
        if (warn_) warn_(text);
    }

    void forget(Fault fault) {
        const std::lock_guard lock(mutex_);
        standing_.erase(fault);
    }

    bool isOpened() {
        const std::lock_guard lock(mutex_);
        return isOpened_;
    }

    /// Null once the search is over, or where the database has not opened.
    std::unique_ptr<NavConnection> take(const Search& search) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return search.isOver || openFailure_ || !idle_.empty(); });
        if (search.isOver || idle_.empty()) return nullptr;
        auto last = std::move(idle_.back());
        idle_.pop_back();
        return last;
    }

    std::optional<std::string> next(Search& search) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return search.isOver || search.asked; });
        if (search.isOver) return std::nullopt;
        return std::exchange(search.asked, std::nullopt); // which needs no memory
    }

    NavConnection::Answer unopened() {
        const std::lock_guard lock(mutex_);
        return {{}, messageOf(openFailure_)};
    }

    static std::string messageOf(const std::exception_ptr& failure) {
        try {
            std::rethrow_exception(failure);
        } catch (const std::exception& error) {
            return error.what();
        }
    }

    const std::string path_;
    const Warn warn_;

    // State below is protected by the mutex
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOpened_ = false;
    std::exception_ptr openFailure_;
    std::vector<std::unique_ptr<NavConnection>> idle_;
    std::map<Fault, Phrase> standing_;
    std::set<Fault> told_;
};

NavDatabase::NavDatabase(const std::string& path, Warn warn, std::chrono::milliseconds limit)
    : room_(std::make_shared<Room>(path, std::move(warn))) {
    startThread([room = room_] { room->open(); }).detach();
    room_->awaitOpening(limit);
}

std::vector<Phrase> NavDatabase::warnings() const { return room_->warnings(); }

NavDatabase::Lookup::Lookup(const NavDatabase& database, const Clock& clock, std::function<bool()> isWanted)
    : room_(database.room_),
      clock_(clock),
      isWanted_(std::move(isWanted)),
      deadline_(clock.now() + lookupLimit) {}

NavDatabase::Lookup::~Lookup() {
    if (search_) room_->end(*search_);
    if (hasAnswer_ && !hasEnded_) room_->noteInTime();
}

std::optional<Coordinate> NavDatabase::Lookup::resolve(const std::string& id) {
    if (!mayGoOn()) return std::nullopt;
    if (!search_) {
        auto search = std::make_shared<Search>();
        startThread([room = room_, search] { room->serve(*search); }).detach();
        search_ = std::move(search);
    }
    const auto answer = room_->ask(*search_, upperCased(id), [this] { return mayGoOn(); });
    if (isLate_) room_->noteLateness();
    if (!answer) return std::nullopt;
    hasAnswer_ = true;
    answer->failure.empty() ? room_->noteRead() : room_->noteFailure(answer->failure);
    return answer->found;
}

bool NavDatabase::Lookup::mayGoOn() {
    if (hasEnded_) return false;
    const bool isWanted = isWanted_();
    isLate_ = isWanted && clock_.now() >= deadline_;
    hasEnded_ = !isWanted || isLate_;
    if (hasEnded_ && search_) room_->end(*search_);
    return !hasEnded_;
}

} // namespace tarnly
