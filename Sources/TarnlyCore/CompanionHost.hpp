#pragma once

#include <array>
#include <atomic>
#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Discovery/PairingManager.hpp"
#include "TarnlyCore/Discovery/ServiceAdvertiser.hpp"
#include "TarnlyCore/Discovery/Visitors.hpp"
#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyCore/NavData/NavDatabase.hpp"
#include "TarnlyCore/Protocol/ProtocolServer.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Recording/SamplingLoop.hpp"
#include "TarnlyCore/Script/LoadedScript.hpp"
#include "TarnlyCore/ScriptFixes.hpp"
#include "TarnlyPlatform/Base/ByteBudget.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/FreedMemory.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/Admission.hpp"
#include "TarnlyPlatform/Net/BrowserGate.hpp"
#include "TarnlyPlatform/Net/WebPages.hpp"

namespace tarnly {

struct CompanionHostErrorCases {
    enum class Case { alreadyStarted };
    static constexpr std::array<std::string_view, 1> names{"alreadyStarted"};
};
using CompanionHostError = Error<CompanionHostErrorCases>;

/// The composition root of the core: builds the shared services once and wires them together. Holds no
/// logic beyond that. Belongs to the network thread.
class CompanionHost {
  public:
    struct Configuration {
        std::filesystem::path recordingDirectory;
        /// Under which the companion is published; absent: not at all.
        std::optional<std::string> instanceName;
        std::string simKind;
        std::string appVersion;
        /// Absent or empty: pairing is open.
        std::optional<std::string> password;
        /// Without one no fix is found.
        std::shared_ptr<NavDatabase> navDatabase;
        /// As for `ServiceAdvertiser::Service`.
        std::vector<std::uint16_t> ports{0};
        ServiceAdvertiser::Publish publish = publishBySystemDaemon;
        AdmissionLimits admission{};
        /// This computer's, as clients may call it.
        std::string hostName = "localhost";
        /// Of web pages that may use the companion.
        std::vector<WebOrigin> allowedOrigins{};
        /// For browsers.
        WebPages pages{};
        /// Told when a recording's log cannot be written, and when it can again, and when a script has come
        /// too early for its fixes. Called from other threads.
        RecordingWriter::Tell tell = [](const std::string&) {};
        /// Told on the network thread, within a heartbeat, when somebody has paired, left or been refused,
        /// and when a recording has begun, ended, or come into trouble or out of it.
        std::function<void()> onActivity = [] {};
    };

    /// `workers` and `clock` must outlive all that runs on `executor`, and nothing may run there any more
    /// once the host is gone.
    CompanionHost(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                  std::shared_ptr<SimBackend> backend, Configuration configuration);

    CompanionHost(const CompanionHost&) = delete;
    CompanionHost& operator=(const CompanionHost&) = delete;

    /// Listens and publishes, then starts the heartbeat. Throws `CompanionHostError::alreadyStarted` at
    /// the second call, or what the advertiser throws; after a failure the host is of no more use.
    Task<> start();

    /// Stops the heartbeat, withdraws the service, tells all connections to end, and ends a recording.
    /// Harmless when not started.
    void stop();

    /// Waits until the connections have ended, for `limit` at most; says whether it came to that. The answers
    /// that are under way leave meanwhile.
    Task<bool> join(Clock::Duration limit) { return server_->join(limit); }

    /// Whether somebody looks at how the simulator stands: it is looked for more often then, as it is while a
    /// client is paired or a recording runs. The backend hears of these at each heartbeat, of this at once.
    void setStageWatched(bool isWatched);

    /// Publishes the companion under another name, or not at all. One call at a time.
    Task<> publishAs(std::optional<std::string> instanceName);

    /// Of web pages that may use the companion from now on.
    void allowOrigins(std::vector<WebOrigin> origins);

    /// For scripts that are loaded from now on. Null: no fix is found. Returns the one before.
    std::shared_ptr<NavDatabase> useNavDatabase(std::shared_ptr<NavDatabase> navDatabase);

    /// Whether one is about to come: without a database, scripts wait for it as long as for a lookup.
    void expectNavDatabase(bool isExpected);

    PairingManager& pairing() { return *pairing_; }
    FlightRecorder& recording() { return *recording_; }
    LoadedScript& loadedScript() { return *loadedScript_; }
    ProtocolServer& server() { return *server_; }
    const Visitors& visitors() const { return *visitors_; }
    SamplingLoop& sampling() { return *sampling_; }
    ServiceAdvertiser& advertiser() { return advertiser_; }
    const ServiceAdvertiser& advertiser() const { return advertiser_; }

  private:
    OnOneThread thread_;
    WorkerPool& workers_;
    Clock& clock_;
    ByteBudget budget_;
    const std::optional<std::string> instanceName_;
    const std::string simKind_;
    const std::string appVersion_;
    const std::vector<std::uint16_t> ports_;
    const std::shared_ptr<std::atomic<bool>> isStopping_ = std::make_shared<std::atomic<bool>>(false);
    /// Each loads one session's script at a time. As many as the navigation database answers side by side.
    WorkerPool scriptWorkers_{NavDatabase::sideBySide};
    const std::shared_ptr<PairingManager> pairing_;
    const std::shared_ptr<Visitors> visitors_;
    const std::shared_ptr<FlightRecorder> recording_;
    const std::shared_ptr<LoadedScript> loadedScript_;
    const std::shared_ptr<FreedMemory> freedMemory_;
    // depends-on: freedMemory_
    const std::shared_ptr<Admission> admission_;
    const std::string hostName_;
    const BrowserGate gate_;
    const std::shared_ptr<const WebPages> pages_;
    const std::shared_ptr<Guarded<NavDatabaseInUse>> navDatabase_;
    // depends-on: scriptWorkers_, pairing_, visitors_, recording_, loadedScript_, freedMemory_, navDatabase_
    const std::shared_ptr<ProtocolServer> server_;
    const std::shared_ptr<bool> isStageWatched_ = std::make_shared<bool>(false);
    // depends-on: recording_, server_, isStageWatched_
    const std::function<void()> tellWatched_;
    // depends-on: recording_, server_, visitors_
    const std::function<void()> tellActivity_;
    // depends-on: recording_, loadedScript_, server_, tellWatched_, tellActivity_
    const std::shared_ptr<SamplingLoop> sampling_;
    // depends-on: server_
    ServiceAdvertiser advertiser_;
    bool started_ = false;
};

} // namespace tarnly
