#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "TarnlyCore/Discovery/BonjourAdvertiser.hpp"
#include "TarnlyCore/Discovery/PairingManager.hpp"
#include "TarnlyCore/Protocol/ProtocolServer.hpp"
#include "TarnlyCore/Protocol/SimBackend.hpp"
#include "TarnlyCore/Recording/SamplingLoop.hpp"
#include "TarnlyPlatform/Clock.hpp"
#include "TarnlyPlatform/WorkerPool.hpp"

namespace tarnly {

class CompanionHostError : public std::runtime_error {
  public:
    static CompanionHostError alreadyStarted();

  private:
    using std::runtime_error::runtime_error;
};

/// The composition root of the core: builds the shared services once and wires them together. Holds no logic
/// beyond that. Belongs to the network thread.
class CompanionHost {
  public:
    struct Identity {
        /// Under which the companion is published.
        std::string instanceName;
        std::string simKind;
        std::string appVersion;
    };

    struct Options {
        /// 0: a free port that the system chooses.
        std::uint16_t port = 0;
        BonjourAdvertiser::Publish publish = publishBySystemDaemon;
    };

    /// `workers` and `clock` must outlive all that runs on `executor`.
    CompanionHost(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                  std::shared_ptr<SimBackend> backend, Identity identity, std::optional<std::string> password,
                  Options options);

    CompanionHost(const CompanionHost&) = delete;
    CompanionHost& operator=(const CompanionHost&) = delete;

    /// Listens and publishes, then starts the heartbeat. Throws `CompanionHostError::alreadyStarted` at the
    /// second call, or what the advertiser throws; after a failure the host is of no more use.
    Task<> start();

    /// Stops the heartbeat, then withdraws the service, then ends all connections. Harmless when not started.
    void stop();

    PairingManager& pairing() { return *pairing_; }
    ProtocolServer& server() { return *server_; }
    SamplingLoop& sampling() { return *sampling_; }
    BonjourAdvertiser& advertiser() { return advertiser_; }

  private:
    const Identity identity_;
    const std::uint16_t port_;
    const std::shared_ptr<PairingManager> pairing_;
    const std::shared_ptr<ProtocolServer> server_; // its sessions share: pairing_
    const std::shared_ptr<SamplingLoop> sampling_; // depends-on: server_
    BonjourAdvertiser advertiser_;                 // hands connections to: server_
    bool started_ = false;
};

} // namespace tarnly
