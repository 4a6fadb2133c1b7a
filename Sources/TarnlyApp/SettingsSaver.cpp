#include "TarnlyApp/SettingsSaver.hpp"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "TarnlyPlatform/Base/StartThread.hpp"

namespace tarnly {
namespace {

/// How long the end of the program waits for a disk.
constexpr auto endPatience = std::chrono::seconds(10);

} // namespace

/// What the two sides share, and what the thread does.
class SettingsSaver::Room {
  public:
    explicit Room(Save save) : save_(std::move(save)) {}

    void hand(AppSettings settings) {
        const std::lock_guard lock(mutex_);
        next_ = std::move(settings);
        changed_.notify_all();
    }

    /// Saves what was handed over, if anything is.
    void saveNext() {
        if (const auto settings = take()) attemptToSave(*settings);
        const std::lock_guard lock(mutex_);
        isSaving_ = false;
        changed_.notify_all();
    }

    /// The thread.
    void run() {
        while (waitForNext())
            saveNext();
    }

    bool finish() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, endPatience, [this] { return !next_ && !isSaving_; });
    }

    /// Has the thread end.
    void close() {
        const std::lock_guard lock(mutex_);
        isClosing_ = true;
        changed_.notify_all();
    }

  private:
    bool waitForNext() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isClosing_ || next_; });
        return !isClosing_;
    }

    std::optional<AppSettings> take() {
        const std::lock_guard lock(mutex_);
        isSaving_ = next_.has_value();
        return std::exchange(next_, std::nullopt);
    }

    void attemptToSave(const AppSettings& settings) const {
        try {
            save_(settings);
        } catch (const std::exception&) {
        }
    }

    // Constant after construction
    const Save save_;

    // State below is protected by the mutex
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<AppSettings> next_;
    bool isSaving_ = false;
    bool isClosing_ = false;
};

SettingsSaver::SettingsSaver(Save save) : room_(std::make_shared<Room>(std::move(save))) {}

SettingsSaver::~SettingsSaver() {
    const bool isFinished = finish();
    room_->close();
    if (!thread_) return;
    isFinished ? thread_->join() : thread_->detach();
}

void SettingsSaver::save(AppSettings settings) {
    room_->hand(std::move(settings));
    if (thread_) return;
    try {
        thread_ = startThread([room = room_] { room->run(); });
    } catch (const std::runtime_error&) {
        room_->saveNext();
    }
}

bool SettingsSaver::finish() { return room_->finish(); }

} // namespace tarnly
