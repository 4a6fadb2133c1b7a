#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"
#include "TarnlyXPlane/Link/SharedAttempt.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {

/// The simulator as a `SimBackend` that finds its way back: owns one link after the other.
///
/// It looks for the simulator by itself, with a growing pause between attempts, and replaces a link that has
/// ended. Nothing that belongs to a link outlives it: an operation that meets its end looks its names up
/// again on the next one. Operations are bounded in time. Belongs to the network thread but for
/// `setSituationsDirectory`; who awaits an operation keeps the backend alive meanwhile.
class ReconnectingBackend final : public SimBackend,
                                  public std::enable_shared_from_this<ReconnectingBackend> {
  public:
    static constexpr std::chrono::milliseconds shortestPause{250};
    /// While somebody cares, and while nobody does.
    static constexpr std::chrono::seconds longestWatchedPause{2};
    static constexpr std::chrono::seconds longestPause{30};
    /// What a request may take, without the pauses that it makes itself.
    static constexpr std::chrono::seconds requestLimit{5};
    static constexpr std::chrono::seconds sampleLimit{2};

    /// As for `XPlaneBackend`.
    ReconnectingBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                        std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers);

    ReconnectingBackend(const ReconnectingBackend&) = delete;
    ReconnectingBackend& operator=(const ReconnectingBackend&) = delete;

    /// Closes.
    ~ReconnectingBackend() override;

    /// Begins to look for the simulator, and keeps the backend until `close`. To be called once.
    void start();

    /// Ends the present link, and looks for no other. Harmless when repeated.
    void close();

    /// Waits until all has ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock::Duration limit);

    /// See `XPlaneBackend`. From any thread.
    void setSituationsDirectory(std::optional<std::string> path);

    /// The version is that of the simulator that was last there.
    Task<SimInfo> simInfo() override;
    Task<std::vector<double>> getDatarefs(std::shared_ptr<const std::vector<std::string>> names) override;
    Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) override;
    Task<> runCommand(std::string name) override;
    Task<std::vector<FlightListing>> listFlights() override;
    Task<> loadFlight(std::string path) override;
    Task<SampleObservation> getTrackSample() override;
    bool isProven(std::int64_t link, Clock::TimePoint moment) const override;
    Task<> moveToPreservingAgl(double latitude, double longitude) override;
    Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) override;
    SimulatorStage stage() const override;
    void onStageChange(std::function<void()> tell) override { tellStageChange_ = std::move(tell); }
    void setWatched(bool isWatched) override;

  private:
    using Link = std::shared_ptr<XPlaneBackend>;

    static Task<> keepLink(std::shared_ptr<ReconnectingBackend> backend);
    Task<> attempt();
    Task<> connect(Link link);
    Task<> stayConnected(Link link);
    Task<> pauseBeforeNext();
    Task<> sayIfSilent(std::int64_t number);
    Link makeLink();
    void finishAttempt(const std::exception_ptr& failure);
    void noteFailure(const std::exception_ptr& failure);
    Clock::Duration currentPause() const;
    void tellIfChanged();

    /// The present link, or the next one as soon as it stands. Throws why there is none, `timedOut` when that
    /// is not known by `deadline`.
    Task<Link> linkBy(Clock::TimePoint deadline);

    /// `operation` on the present link, and on the next one where that ends; for `limit` at most.
    template <typename Operation>
    std::invoke_result_t<Operation, XPlaneBackend&> onLink(Clock::Duration limit, Operation operation);

    template <typename Operation>
    static std::invoke_result_t<Operation, XPlaneBackend&> runOn(Link link, Operation operation);

    NetworkError timedOut() const;

    OnOneThread thread_;

    // Constant after construction
    const boost::asio::any_io_executor executor_;
    const Endpoint endpoint_;
    const std::shared_ptr<XPlaneTransport> transport_;
    Clock& clock_;
    WorkerPool& workers_;

    Guarded<std::optional<std::string>> situationsDirectory_;
    TaskGroup tasks_;
    /// Somebody needs a link now.
    Event wanted_;
    /// The link in use, or the one that is being tried; null between attempts.
    Link link_;
    /// Null while a link is in use, and between attempts.
    std::shared_ptr<SharedAttempt> attempt_;
    std::exception_ptr lastFailure_;
    Clock::TimePoint lastFailureAt_{};
    SimulatorStage stageWithoutLink_;
    SimulatorStage toldStage_;
    std::function<void()> tellStageChange_;
    std::string version_ = "unknown";
    std::int64_t links_ = 0;
    Clock::Duration pause_ = shortestPause;
    bool isConnected_ = false;
    bool isWanted_ = false;
    bool isWatched_ = false;
    bool isClosed_ = false;
};

} // namespace tarnly
