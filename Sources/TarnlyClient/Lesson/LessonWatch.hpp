#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/signal_set.hpp>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyClient/Companion/RecordingFollower.hpp"
#include "TarnlyClient/Lesson/LessonFlight.hpp"
#include "TarnlyClient/Lesson/LessonTerminal.hpp"
#include "TarnlyClient/Lesson/RedrawnTable.hpp"

namespace tarnly::client {

/// Follows a lesson's recording until its trigger, its time, a key or a signal ends it, and shows meanwhile
/// how it stands.
///
/// Belongs to the thread that runs the executor; what it is made of outlives it.
class LessonWatch {
  public:
    struct Options {
        std::string lesson;
        /// Of the recording that is followed. Its `time` ends the lesson.
        RecordingFollower::Options following;
        /// Where the table is redrawn; null for lines in its place.
        std::ostream* terminal = nullptr;
    };

    /// Whom to tell what, while there is no table: as those of a `RecordingFollower`.
    struct Listener {
        std::function<void(const LogLine& line)> recorded;
        std::function<void(const std::string& text)> remark;
    };

    LessonWatch(boost::asio::any_io_executor executor, Clock& clock, Endpoint companion, Options options,
                LessonFlight& flight, Listener listener);

    /// Goes on until the end. Throws as the follower does. To be called once.
    Task<> run();

    /// Why it ended: "the trigger climbing-out fired".
    const std::string& end() const { return end_; }
    /// Where the companion was last.
    const Endpoint& companion() const { return follower_.companion(); }
    /// Whether the recording that was followed last is the one that this lesson has started.
    bool isRecordingOwn() const { return isRecordingOwn_; }

  private:
    void take(const LogLine& line);
    void beginAnew();
    void connected(bool isConnected);
    void remark(const std::string& text);
    void endBecause(const std::string& reason);
    void press(char key);
    void draw();
    std::string connectionText() const;
    Task<> keepDrawing();
    RecordingFollower::Listener followerListener();

    const boost::asio::any_io_executor executor_;
    Clock& clock_;
    const Clock::TimePoint begin_;
    const std::string lesson_;
    LessonFlight& flight_;
    const Listener listener_;
    std::optional<RedrawnTable> table_;
    std::string end_ = "its time was over";
    /// When the last sample has come, or the recording began.
    Clock::TimePoint lastSampleAt_;
    bool isConnected_ = true;
    bool wasLost_ = false;
    bool isRecordingOwn_ = true;
    RecordingFollower follower_;
    boost::asio::signal_set signals_;
    Keyboard keyboard_;
    TaskGroup drawing_;
};

} // namespace tarnly::client
