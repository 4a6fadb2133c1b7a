#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyXPlane/Link/WebApiLink.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly {

/// What an operation of `XPlaneBackend` fails with, besides failures of the network. In parentheses what
/// goes with the case.
struct XPlaneBackendErrorCases {
    enum class Case {
        unknownDataref,                   ///< absent from the catalogue (the dataref)
        unknownCommand,                   ///< absent from the catalogue (the command)
        commandFailed,                    ///< refused by the simulator (the command)
        timeout,                          ///< no value came in time (the dataref)
        flightNotFound,                   ///< no such file (its path)
        notImplemented,                   ///< for a backend that lacks an operation (the operation)
        situationsDirectoryNotConfigured, ///< (nothing)
    };
    static constexpr std::array<std::string_view, 7> names{"unknownDataref",
                                                           "unknownCommand",
                                                           "commandFailed",
                                                           "timeout",
                                                           "flightNotFound",
                                                           "notImplemented",
                                                           "situationsDirectoryNotConfigured"};
};
using XPlaneBackendError = Error<XPlaneBackendErrorCases>;

/// The X-Plane flight simulator as a `SimBackend`: datarefs and commands over its local web API,
/// situations by a datagram.
///
/// The first operation connects; nothing connects again, so a restarted simulator needs a new backend.
/// Operations run on the network thread and may overlap; who awaits one keeps the backend alive
/// meanwhile. They throw `XPlaneBackendError`, and `NetworkError` when the simulator cannot be reached.
class XPlaneBackend final : public SimBackend {
  public:
    /// `executor` is the network thread's; `clock` and `workers` must outlive all that runs there.
    XPlaneBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                  std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers);

    XPlaneBackend(const XPlaneBackend&) = delete;
    XPlaneBackend& operator=(const XPlaneBackend&) = delete;

    /// Closes.
    ~XPlaneBackend() override;

    /// Ends the connection to the simulator, for good: operations that need it fail from then on.
    /// Harmless when repeated.
    void close();

    /// Waits until the connection has ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock::Duration limit) { return link_->join(clock_, limit); }

    /// The absolute path of the folder with the situation files; without one, listing fails. From any
    /// thread.
    void setSituationsDirectory(std::optional<std::string> path);

    Task<SimInfo> simInfo() override;

    /// `name` may end in an index in brackets, "sim/a[3]", for one element of an array dataref. Answers
    /// the last value that came; the first read of a dataref subscribes to it and waits for about a
    /// second.
    Task<double> getDataref(std::string name);

    Task<std::vector<double>> getDatarefs(std::shared_ptr<const std::vector<std::string>> names) override;

    Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) override;
    Task<> runCommand(std::string name) override;
    Task<std::vector<FlightListing>> listFlights() override;

    /// Returns when the simulator has been told; whether it has loaded the flight is not known.
    Task<> loadFlight(std::string path) override;

    /// The first call subscribes, and waits up to a second for the first values.
    Task<SampleObservation> getTrackSample() override;

    bool isProven(std::int64_t, Clock::TimePoint) const override { return true; }
    SimulatorStage stage() const override { return {SimulatorStage::Kind::flightLoaded, "", {}}; }
    void onStageChange(std::function<void()>) override {}
    void setWatched(bool) override {}

    /// Takes two seconds: the simulator needs them to load the ground at the new place.
    Task<> moveToPreservingAgl(double latitude, double longitude) override;

    Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) override;

  private:
    Task<double> getIndexedDataref(std::string name, std::int64_t index);
    Task<> ensureSampleRefsSubscribed();
    Task<> setPosition(double latitude, double longitude, double elevation);
    Task<> setDatarefNamed(std::string_view name, double value);

    /// What `lookup` finds, after a subscription if need be.
    template <typename Lookup>
    Task<double> readOrSubscribe(std::string name, std::int64_t id, Lookup lookup);

    /// Looks 50 times, 20 ms apart; the last result.
    template <typename Lookup>
    Task<std::invoke_result_t<Lookup>> poll(Lookup lookup);

    OnOneThread thread_;

    // Constant after construction
    const std::string host_;
    const std::shared_ptr<WebApiLink> link_;
    const std::shared_ptr<XPlaneTransport> transport_;
    Clock& clock_;
    WorkerPool& workers_;

    bool sampleRefsSubscribed_ = false;
    Guarded<std::optional<std::string>> situationsDirectory_;
};

} // namespace tarnly
