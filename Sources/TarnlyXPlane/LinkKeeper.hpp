#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>

#include "TarnlyCore/Flight/SimulatorStage.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"
#include "TarnlyXPlane/Link/SharedAttempt.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {

/// Looks for the simulator, and owns one link to it after the other: a link that has ended is replaced, with
/// a growing pause between attempts that fail.
///
/// Belongs to the network thread; held by its own task from `start` to `close`.
class LinkKeeper : public std::enable_shared_from_this<LinkKeeper> {
  public:
    using Link = std::shared_ptr<XPlaneBackend>;
    /// A link that is not connected, with that number.
    using MakeLink = std::function<Link(std::int64_t number)>;

    static constexpr std::chrono::milliseconds shortestPause{250};
    /// While somebody cares, and while nobody does.
    static constexpr std::chrono::seconds longestWatchedPause{2};
    static constexpr std::chrono::seconds longestPause{30};
    /// A link that ends before that counts as an attempt that has failed.
    static constexpr std::chrono::seconds shortLife{5};

    /// `endpoint` is the simulator's in errors. `clock` must outlive all that runs on `executor`.
    LinkKeeper(boost::asio::any_io_executor executor, Endpoint endpoint, Clock& clock, MakeLink makeLink);

    LinkKeeper(const LinkKeeper&) = delete;
    LinkKeeper& operator=(const LinkKeeper&) = delete;

    /// To be called once.
    void start();

    /// Ends the present link, and looks for no other. Harmless when repeated.
    void close();

    /// Waits until all has ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock::Duration limit);

    /// The link in use; null while there is none.
    Link present() const { return isConnected_ && !link_->hasEnded() ? link_ : nullptr; }

    /// The link in use, or the next one as soon as it stands; who asks between attempts has one begin soon.
    /// Throws why there is none, `timedOut` when that is not known by `deadline`.
    Task<Link> linkBy(Clock::TimePoint deadline);

    /// Whether somebody cares: the simulator is then looked for more often.
    void setWatched(bool isWatched);

    SimulatorStage stage() const;
    void onStageChange(std::function<void()> tell) { tellStageChange_ = std::move(tell); }

    /// Of the simulator that was last there; "unknown" where it did not tell.
    std::string version() const;

    NetworkError timedOut() const;

  private:
    static Task<> keepLink(std::shared_ptr<LinkKeeper> keeper);
    Task<> attempt();
    Task<> connect(Link link);
    Task<> stayConnected(Link link);
    Task<> pauseBeforeNext();
    static Task<> sayIfSilent(std::shared_ptr<LinkKeeper> keeper, std::int64_t number);
    void finishAttempt(const std::exception_ptr& failure);
    void noteFailure(const std::exception_ptr& failure);
    void noteVersion();
    Clock::Duration currentPause() const;
    NetworkError closed() const;
    void tellIfChanged();

    OnOneThread thread_;

    // Constant after construction
    const boost::asio::any_io_executor executor_;
    const Endpoint endpoint_;
    Clock& clock_;
    const MakeLink makeLink_;

    TaskGroup tasks_;
    /// Somebody needs a link now.
    Event wanted_;
    bool isWanted_ = false;
    bool isWatched_ = false;

    /// The link in use, or the one that was tried last.
    Link link_;
    std::int64_t links_ = 0;
    bool isConnected_ = false;
    bool isClosed_ = false;

    /// Null while a link is in use, and between attempts.
    std::shared_ptr<SharedAttempt> attempt_;
    /// Null while all is well.
    std::exception_ptr lastFailure_;
    Clock::TimePoint lastFailureAt_{};
    Clock::Duration pause_ = shortestPause;

    SimulatorStage stageWithoutLink_;
    SimulatorStage toldStage_;
    std::function<void()> tellStageChange_;
    std::string version_;
};

} // namespace tarnly
