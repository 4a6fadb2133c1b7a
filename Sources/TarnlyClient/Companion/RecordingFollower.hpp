#pragma once

#include <algorithm>
#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyClient/Companion/CatchUp.hpp"
#include "TarnlyClient/Companion/CompanionSession.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly::client {

/// How long to wait before each further attempt: twice as long each time, up to a limit. A plain value.
class GrowingPause {
  public:
    using Duration = std::chrono::milliseconds;

    GrowingPause(Duration shortest, Duration longest)
        : shortest_(shortest), longest_(longest), next_(shortest) {}

    Duration next() {
        const auto pause = next_;
        next_ = std::min(2 * next_, longest_);
        return pause;
    }

    /// An attempt has succeeded.
    void reset() { next_ = shortest_; }

  private:
    Duration shortest_;
    Duration longest_;
    Duration next_;
};

/// Follows the companion's recording from its beginning on, over as many connections as it takes.
///
/// Belongs to the thread that runs the executor; must outlive `run`.
class RecordingFollower {
  public:
    /// Whom to tell what. `recorded` is called with each sample and each fired trigger once, in order;
    /// `remark` with what the person should know of the connection and the recording. The others may be
    /// empty: `begunAnew` is called, in place of a remark, before what is recorded of another recording, and
    /// `connected` with whether the companion answers, whenever that changes.
    struct Listener {
        std::function<void(const LogLine& line)> recorded;
        std::function<void(const std::string& text)> remark;
        std::function<void()> begunAnew{};
        std::function<void(bool isConnected)> connected{};
    };

    struct Options {
        CompanionSession::Options session;
        /// How many fired triggers to show.
        std::optional<std::int64_t> count;
        /// How long to go on after the first answer.
        std::optional<std::chrono::milliseconds> time;
        /// Where the companion is now, after a connection was lost. Called on another thread, where it may
        /// block; may throw `ClientError`. When empty, the companion stays where it was.
        std::function<Endpoint()> locate;
        std::chrono::milliseconds interval{1'000};
        GrowingPause pause{std::chrono::milliseconds(500), std::chrono::milliseconds(5'000)};
    };

    /// `clock` must outlive all that runs on `executor`.
    RecordingFollower(boost::asio::any_io_executor executor, Clock& clock, Endpoint companion,
                      Options options, Listener listener);

    /// Goes on until `end`, or until all is shown that was asked for. Throws `ClientError` when there is no
    /// first answer, and whenever the companion refuses. To be called once.
    Task<> run();

    void end();

    /// Where the companion was last.
    const Endpoint& companion() const { return companion_; }

  private:
    Task<> followUntilLost();
    Task<> follow();
    Task<> ask();
    Task<> lookAgain();
    Task<> endAfter(Clock::Duration time);

    void show(const RecordedFlight& news);
    void isAnswered();
    void tellBegunAnew();
    void tellConnected(bool isConnected);
    void lost(const std::string& reason);

    OnOneThread thread_;
    const boost::asio::any_io_executor executor_;
    Clock& clock_;
    Endpoint companion_;
    Options options_;
    const Listener listener_;
    /// The connection in use, or the last one.
    std::optional<CompanionSession> session_;
    CatchUpCursor cursor_;
    Event ended_;
    TaskGroup timeLimit_;
    std::int64_t shown_ = 0;
    bool hasBegun_ = false;
    bool isLost_ = false;
    bool isEnded_ = false;
    WorkerPool workers_{1};
};

} // namespace tarnly::client
