#include "TarnlyCore/CompanionHost.hpp"

#include <utility>

namespace tarnly {
namespace {

ProtocolServer::MakeSession sessionFactory(std::shared_ptr<PairingManager> pairing,
                                           std::shared_ptr<SimBackend> backend, WorkerPool& workers) {
    return [pairing = std::move(pairing), backend = std::move(backend), &workers] {
        return std::make_shared<ProtocolSession>(pairing, backend, workers);
    };
}

SamplingLoop::PushSubscriptions pushThrough(std::shared_ptr<ProtocolServer> server) {
    return [server = std::move(server)] {
        server->broadcast(
            [](const std::shared_ptr<ProtocolSession>& session) { return session->buildSubscriptionPush(); });
    };
}

} // namespace

CompanionHostError CompanionHostError::alreadyStarted() { return CompanionHostError("alreadyStarted"); }

CompanionHost::CompanionHost(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                             std::shared_ptr<SimBackend> backend, Identity identity,
                             std::optional<std::string> password, Options options)
    : identity_(std::move(identity)),
      port_(options.port),
      pairing_(std::make_shared<PairingManager>(std::move(password))),
      server_(
          std::make_shared<ProtocolServer>(executor, sessionFactory(pairing_, std::move(backend), workers))),
      sampling_(std::make_shared<SamplingLoop>(executor, clock, pushThrough(server_))),
      advertiser_(executor, std::move(options.publish)) {}

Task<> CompanionHost::start() {
    if (started_) throw CompanionHostError::alreadyStarted();
    started_ = true;
    BonjourAdvertiser::Service service;
    service.instanceName = identity_.instanceName;
    service.port = port_;
    service.simKind = identity_.simKind;
    service.appVersion = identity_.appVersion;
    service.pairingRequired = pairing_->requiresPairing();
    WebSocketListener::ConnectionHandler onNewConnection =
        [server = server_](std::shared_ptr<WebSocketConnection> connection) {
            server->accept(std::move(connection));
        };
    co_await advertiser_.start(std::move(service), std::move(onNewConnection));
    sampling_->start();
}

void CompanionHost::stop() {
    sampling_->stop();
    advertiser_.stop();
    server_->cancelAll();
}

} // namespace tarnly
