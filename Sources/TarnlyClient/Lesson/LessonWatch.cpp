#include "TarnlyClient/Lesson/LessonWatch.hpp"

#include <csignal>
#include <exception>
#include <utility>

#include "TarnlyClient/Lesson/LessonTable.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"

namespace tarnly::client {
namespace {

constexpr std::chrono::milliseconds betweenDrawings{500};

/// Samples come twice a second and are asked for every second: then something is in the way.
constexpr std::chrono::seconds longestSilence{5};

bool isEndKey(char key) { return key == 'q' || key == 'Q' || key == '\r' || key == '\n'; }

} // namespace

LessonWatch::LessonWatch(boost::asio::any_io_executor executor, Clock& clock, Endpoint companion,
                         Options options, LessonFlight& flight, Listener listener)
    : executor_(std::move(executor)),
      clock_(clock),
      begin_(clock.now()),
      lesson_(std::move(options.lesson)),
      flight_(flight),
      listener_(std::move(listener)),
      lastSampleAt_(begin_),
      follower_(executor_, clock, std::move(companion), std::move(options.following), followerListener()),
      // What ends a program that is left alone shall end the lesson in order, the terminal's mode included.
      signals_(executor_, SIGINT, SIGTERM, SIGHUP),
      keyboard_(executor_, [this](char key) { press(key); }),
      drawing_(executor_) {
    if (options.terminal != nullptr) table_.emplace(*options.terminal);
    signals_.add(SIGQUIT);
}

Task<> LessonWatch::run() {
    signals_.async_wait([this](const boost::system::error_code& error, int) {
        if (!error) endBecause("it was interrupted");
    });
    if (table_) drawing_.spawn(keepDrawing(), dropFailure);
    std::exception_ptr failure;
    try {
        co_await follower_.run();
    } catch (...) {
        failure = std::current_exception();
    }
    follower_.end(); // its time as well
    drawing_.cancel();
    keyboard_.close();
    signals_.cancel();
    if (table_) table_->clear();
    if (failure) std::rethrow_exception(failure);
}

RecordingFollower::Listener LessonWatch::followerListener() {
    return {[this](const LogLine& line) { take(line); }, [this](const std::string& text) { remark(text); },
            [this] { beginAnew(); }, [this](bool isConnected) { connected(isConnected); }};
}

void LessonWatch::take(const LogLine& line) {
    flight_.take(line);
    wasLost_ = false;
    if (line.sample) lastSampleAt_ = clock_.now();
    if (!table_) listener_.recorded(line);
    if (line.fired && flight_.isOver())
        endBecause("the trigger " + printable(line.fired->triggerId) + " fired");
}

void LessonWatch::beginAnew() {
    flight_.beginAnew();
    isRecordingOwn_ = false;
    // A companion that was restarted has no script any more, and records nothing before it is told to.
    remark(wasLost_
               ? "the companion was restarted, or another client has started the recording anew: what was "
                 "flown before is kept; end this lesson and begin it again where nothing is recorded"
               : "another client has started the recording anew: what was flown before is kept, and the "
                 "lesson goes on in the new recording");
}

void LessonWatch::connected(bool isConnected) {
    isConnected_ = isConnected;
    wasLost_ = true; // until the next news
}

void LessonWatch::remark(const std::string& text) {
    if (table_) table_->clear();
    listener_.remark(text);
    draw();
}

void LessonWatch::endBecause(const std::string& reason) {
    end_ = reason;
    follower_.end();
}

void LessonWatch::press(char key) {
    if (isEndKey(key)) endBecause("a key was pressed");
}

void LessonWatch::draw() {
    if (!table_) return;
    const auto size = outputSize();
    const std::chrono::duration<double> running = clock_.now() - begin_;
    const LessonView view{
        lesson_,         connectionText(),
        running.count(), keyboard_.isOpen() ? "q ends the lesson" : "Ctrl-C ends the lesson",
        size.columns,    size.rows};
    table_->draw(lessonTable(view, flight_));
}

/// A simulator that is silent, and a recording that somebody has stopped, look the same from here.
std::string LessonWatch::connectionText() const {
    if (!isConnected_) return "no connection, trying again";
    const std::chrono::duration<double> silence = clock_.now() - lastSampleAt_;
    return silence < longestSilence ? "connected" : "connected, no sample for " + timeText(silence.count());
}

Task<> LessonWatch::keepDrawing() {
    for (;;) {
        draw();
        co_await clock_.sleepFor(betweenDrawings);
    }
}

} // namespace tarnly::client
