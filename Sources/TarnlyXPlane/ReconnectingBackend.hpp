#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyXPlane/LinkKeeper.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {

/// The simulator as a `SimBackend` that finds its way back: owns one link after the other.
///
/// It looks for the simulator by itself, with a growing pause between attempts, and replaces a link that has
/// ended. Nothing that belongs to a link outlives it: an operation that meets its end looks its names up
/// again on the next one. Operations are bounded in time. Belongs to the network thread but for
/// `setSituationsDirectory`; who awaits an operation keeps the backend alive meanwhile.
class ReconnectingBackend final : public SimBackend {
  public:
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
    void start() { keeper_->start(); }

    /// Ends the present link, and looks for no other. Harmless when repeated.
    void close();

    /// Waits until all has ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock::Duration limit) { return keeper_->join(limit); }

    /// See `XPlaneBackend`. From any thread.
    void setSituationsDirectory(std::optional<std::string> path);
    /// See `XPlaneBackend`.
    void onWarning(std::function<void(const Phrase& text)> warn) { withoutLink_->onWarning(std::move(warn)); }

    /// See `XPlaneBackend`. From any thread.
    std::vector<Phrase> warnings() const { return withoutLink_->warnings(); }

    /// The version is that of the simulator that was last there.
    SimInfo simInfo() override;
    std::optional<std::vector<double>> presentDatarefs(const std::vector<std::string>& names) override;
    Task<std::vector<double>> getDatarefs(std::shared_ptr<const std::vector<std::string>> names) override;
    Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) override;
    Task<> runCommand(std::string name) override;
    Task<std::vector<FlightListing>> listFlights() override;
    Task<> loadFlight(std::string path) override;
    Task<SampleObservation> getTrackSample() override;
    bool isProven(std::int64_t link, Clock::TimePoint moment) const override;
    Task<> moveToPreservingAgl(double latitude, double longitude) override;
    Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) override;
    SimulatorStage stage() const override { return keeper_->stage(); }
    /// For who is about to ask for the stage: ends when that is of now, and after `limit` at the latest.
    Task<> lookAnew(Clock::Duration limit);
    void onStageChange(std::function<void()> tell) override { keeper_->onStageChange(std::move(tell)); }
    void setWatched(bool isWatched) override { keeper_->setWatched(isWatched); }

  private:
    /// `operation` on the present link, and on the next one where that ends; for `limit` at most.
    template <typename Operation>
    std::invoke_result_t<Operation, XPlaneBackend&> onLink(Clock::Duration limit, Operation operation);
    template <typename Operation>
    static std::invoke_result_t<Operation, XPlaneBackend&> runOn(LinkKeeper::Link link, Operation operation);

    OnOneThread thread_;

    // Constant after construction
    Clock& clock_;
    const LinkKeeper::MakeLink makeLink_;
    /// For what needs no connection; never connected.
    const LinkKeeper::Link withoutLink_;
    const std::shared_ptr<LinkKeeper> keeper_;
};

} // namespace tarnly
