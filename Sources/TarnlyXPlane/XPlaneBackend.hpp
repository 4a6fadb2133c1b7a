#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyXPlane/FileLooks.hpp"
#include "TarnlyXPlane/Link/WebApiLink.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"
#include "TarnlyXPlane/Situations.hpp"
#include "TarnlyXPlane/XPlaneBackendError.hpp"

namespace tarnly {

/// The X-Plane flight simulator as a `SimBackend`: datarefs and commands over its local web API,
/// situations by a datagram.
///
/// One link's life: the first operation connects, and nothing connects again, so a restarted simulator needs
/// a new backend (`ReconnectingBackend`). Operations run on the network thread and may overlap; who awaits
/// one keeps the backend alive meanwhile. They throw `XPlaneBackendError`, and `NetworkError` when the
/// simulator cannot be reached: `LinkFailure` where connecting failed, `LinkEnded` where the next link may
/// do.
class XPlaneBackend final : public SimBackend {
  public:
    static constexpr std::string_view unknownVersion = "unknown";

    /// What a look at the situations' folder or at one of its files may take.
    static constexpr std::chrono::seconds situationsLimit{5};

    /// How files are looked at: blocking, from any thread.
    struct Situations {
        std::function<SituationList(const std::string& directory)> list = listSituations;
        std::function<bool(const std::string& path)> exists = situationExists;
    };

    /// `executor` is the network thread's; `clock` and `workers` must outlive all that runs there. `number`
    /// is the link's in its samples.
    XPlaneBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                  std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers,
                  std::int64_t number, Situations situations);
    XPlaneBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                  std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers,
                  std::int64_t number = 1)
        : XPlaneBackend(std::move(executor), std::move(endpoint), std::move(transport), clock, workers,
                        number, Situations{}) {}

    XPlaneBackend(const XPlaneBackend&) = delete;
    XPlaneBackend& operator=(const XPlaneBackend&) = delete;

    /// Closes.
    ~XPlaneBackend() override;

    /// Ends the connection to the simulator, for good: operations that need it fail from then on.
    /// Harmless when repeated.
    void close();

    /// Waits until the connection has ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock::Duration limit) { return link_->join(clock_, limit); }

    /// Connects, and has the link watched from then on (see `WebApiLink::watch`); the simulator's version is
    /// asked for aside. Throws `LinkFailure`.
    Task<> connect();

    /// The simulator's version, once it has told it.
    const std::string& version() const { return *version_; }

    /// Returns when the link has ended.
    Task<> ended() { return link_->ended(); }
    bool hasEnded() const { return link_->hasEnded(); }
    Clock::TimePoint lastSign() const { return link_->lastSign(); }

    /// The absolute path of the folder with the situation files; without one, listing fails. From any
    /// thread.
    void setSituationsDirectory(std::optional<std::string> path);

    /// What is worth a person's notice, each thing once. To be set before the first operation.
    void onWarning(std::function<void(const Phrase& text)> warn) { warn_ = std::move(warn); }

    /// What was amiss when the saved flights were listed last, in the folder that is in use. From any thread.
    std::vector<Phrase> warnings() const;

    SimInfo simInfo() override;
    std::optional<std::vector<double>> presentDatarefs(const std::vector<std::string>& names) override;

    /// A name may end in an index in brackets, "sim/a[3]", for one element of an array dataref. Answers the
    /// last values that came; the first read of a dataref subscribes to it and waits for about a second.
    Task<std::vector<double>> getDatarefs(std::shared_ptr<const std::vector<std::string>> names) override;

    /// One of them.
    Task<double> getDataref(std::string name);

    Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) override;
    Task<> runCommand(std::string name) override;
    Task<std::vector<FlightListing>> listFlights() override;

    /// Returns when the simulator has been told; whether it has loaded the flight is not known.
    Task<> loadFlight(std::string path) override;

    /// The first call subscribes, and waits up to a second for the altitude. Fails at the main menu, and
    /// while the simulator is silent.
    Task<SampleObservation> getTrackSample() override;

    bool isProven(std::int64_t link, Clock::TimePoint moment) const override;

    /// Takes two seconds: the simulator needs them to load the ground at the new place.
    Task<> moveToPreservingAgl(double latitude, double longitude) override;

    Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) override;

    /// Of a link that is not connected: not running.
    SimulatorStage stage() const override;
    void onStageChange(std::function<void()> tell) override { tellStageChange_ = std::move(tell); }
    void setWatched(bool) override {}

  private:
    Task<> ensureSampleRefsSubscribed();
    /// What `look` finds in time.
    template <typename Result>
    Task<Result> inTime(Task<Result> look);
    /// Tells each once; empty where all is well.
    void noteListing(const std::string& directory, Phrase leftOut, Phrase unreadable);
    Task<> setPosition(double latitude, double longitude, double elevation);
    Task<> setDatarefNamed(std::string_view name, double value);
    Task<std::int64_t> commandId(std::string name);
    Task<HttpResponse> activate(std::string path);
    void throwIfSilent(const std::string& what) const;
    bool hasAltitude() const;
    static Task<> askVersion(std::shared_ptr<WebApiLink> link, std::shared_ptr<std::string> version);

    OnOneThread thread_;

    // Constant after construction
    const std::string host_;
    const std::int64_t number_;
    const std::shared_ptr<WebApiLink> link_;
    const std::shared_ptr<XPlaneTransport> transport_;
    Clock& clock_;

    FileLooks<SituationList> listings_;
    FileLooks<bool> existence_;
    std::function<void(const Phrase& text)> warn_;
    bool hasWarnedOfLeftOut_ = false;
    bool hasWarnedOfUnreadable_ = false;

    std::shared_ptr<std::string> version_ = std::make_shared<std::string>(unknownVersion);
    TaskGroup asking_;
    std::function<void()> tellStageChange_;
    /// Until when a sample waits for the altitude; absent before the first.
    std::optional<Clock::TimePoint> altitudeWaitEnd_;
    struct Situated {
        std::optional<std::string> directory;
        std::vector<Phrase> warnings;
    };
    Guarded<Situated> situated_;
};

} // namespace tarnly
