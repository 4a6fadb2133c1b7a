#include "TarnlyCore/CompanionHost.hpp"

#include <utility>

#include "TarnlyCore/Protocol/ProtocolLimits.hpp"

namespace tarnly {
namespace {

/// Of messages that are decoded at once, or wait for that.
constexpr std::size_t decodedAtOnce = std::size_t{128} * 1024 * 1024;

PairingGuard::OnAnswer noteIn(const std::shared_ptr<Visitors>& visitors) {
    return [visitors](const PeerNetwork& from, bool isAccepted) {
        visitors->note(isAccepted ? Visitors::Kind::paired : Visitors::Kind::refused, from);
    };
}

SamplingLoop::PushSubscriptions pushThrough(std::shared_ptr<ProtocolServer> server) {
    return [server = std::move(server)] {
        server->broadcast(
            [](const std::shared_ptr<ProtocolSession>& session) { return session->buildSubscriptionPush(); });
    };
}

std::function<void()> noteFreed(const std::shared_ptr<FreedMemory>& freedMemory) {
    return [weak = std::weak_ptr(freedMemory)] {
        if (const auto alive = weak.lock()) alive->note();
    };
}

std::function<void()> tellWatchedTo(std::shared_ptr<SimBackend> backend,
                                    std::shared_ptr<ProtocolServer> server,
                                    std::shared_ptr<FlightRecorder> recording,
                                    std::shared_ptr<bool> isStageWatched) {
    return [backend = std::move(backend), server = std::move(server), recording = std::move(recording),
            isStageWatched = std::move(isStageWatched)] {
        backend->setWatched(*isStageWatched || recording->isRecording() || server->pairedCount() > 0);
    };
}

/// What the person at the computer may want to be told of.
struct Activity {
    std::size_t paired = 0;
    std::int64_t pairings = 0;
    std::int64_t refusals = 0;
    bool isRecording = false;
    Phrase problem{};

    bool operator==(const Activity&) const = default;
};

std::int64_t countOf(const Visitors& visitors, Visitors::Kind kind) {
    const auto& visits = visitors.of(kind);
    return visits ? visits->count : 0;
}

std::function<void()> tellActivityTo(std::function<void()> tell, std::shared_ptr<ProtocolServer> server,
                                     std::shared_ptr<FlightRecorder> recording,
                                     std::shared_ptr<Visitors> visitors) {
    return [tell = std::move(tell), server = std::move(server), recording = std::move(recording),
            visitors = std::move(visitors), before = std::make_shared<Activity>()] {
        const auto progress = recording->progress();
        Activity present{server->pairedCount(), countOf(*visitors, Visitors::Kind::paired),
                         countOf(*visitors, Visitors::Kind::refused), progress.has_value(),
                         progress ? progress->problem : Phrase()};
        if (present == *before) return;
        *before = std::move(present);
        tell();
    };
}

} // namespace

CompanionHost::CompanionHost(boost::asio::any_io_executor executor, WorkerPool& workers, Clock& clock,
                             std::shared_ptr<SimBackend> backend, Configuration configuration)
    : workers_(workers),
      clock_(clock),
      budget_(decodedAtOnce),
      instanceName_(std::move(configuration.instanceName)),
      simKind_(std::move(configuration.simKind)),
      appVersion_(std::move(configuration.appVersion)),
      ports_(std::move(configuration.ports)),
      pairing_(std::make_shared<PairingManager>(std::move(configuration.password))),
      visitors_(std::make_shared<Visitors>(FlightRecorder::systemTime)),
      recording_(std::make_shared<FlightRecorder>(std::move(configuration.recordingDirectory), clock,
                                                  FlightRecorder::systemTime, RecordingLog::open,
                                                  configuration.tell)),
      loadedScript_(std::make_shared<LoadedScript>()),
      freedMemory_(std::make_shared<FreedMemory>(executor, workers, clock)),
      admission_(
          std::make_shared<Admission>(executor, clock, configuration.admission, noteFreed(freedMemory_))),
      hostName_(std::move(configuration.hostName)),
      gate_(hostName_, std::move(configuration.allowedOrigins)),
      pages_(std::make_shared<WebPages>(std::move(configuration.pages))),
      navDatabase_(std::make_shared<Guarded<NavDatabaseInUse>>(
          NavDatabaseInUse{std::move(configuration.navDatabase)})),
      server_(std::make_shared<ProtocolServer>(
          executor, clock,
          [services =
               ProtocolSession::Services{
                   pairing_, std::make_shared<PairingGuard>(executor, clock, noteIn(visitors_)), backend,
                   recording_, loadedScript_, fixesIn(navDatabase_, clock, isStopping_, configuration.tell),
                   std::make_shared<Allowance>(ProtocolLimits::namesInAll), workers, scriptWorkers_,
                   noteFreed(freedMemory_)}](const PeerNetwork& peer) {
              return std::make_shared<ProtocolSession>(services, peer);
          })),
      tellWatched_(tellWatchedTo(backend, server_, recording_, isStageWatched_)),
      tellActivity_(tellActivityTo(std::move(configuration.onActivity), server_, recording_, visitors_)),
      sampling_(std::make_shared<SamplingLoop>(
          executor, clock, backend, recording_, loadedScript_, pushThrough(server_),
          [tellWatched = tellWatched_, tellActivity = tellActivity_] {
              tellWatched();
              tellActivity();
          },
          [server = server_, recording = recording_] {
              return recording->isRecording() || server->connectionCount() > 0;
          })),
      advertiser_(executor, clock, std::move(configuration.publish)) {}

Task<> CompanionHost::start() {
    thread_.check();
    if (started_) throw CompanionHostError(CompanionHostError::Case::alreadyStarted);
    started_ = true;
    ServiceAdvertiser::Service service;
    service.instanceName = instanceName_;
    service.ports = ports_;
    service.simKind = simKind_;
    service.appVersion = appVersion_;
    service.pairingRequired = pairing_->requiresPairing();
    WebSocketListener::ConnectionHandler onNewConnection =
        [server = server_, sampling = sampling_](std::shared_ptr<WebSocketConnection> connection) {
            server->accept(std::move(connection));
            sampling->wake();
        };
    WebSocketListener::Options options;
    options.limits.budget = &budget_;
    options.admission = admission_;
    options.gate = gate_;
    options.pages = pages_;
    options.onPageVisit = [visitors = visitors_](const PeerNetwork& from) {
        visitors->note(Visitors::Kind::page, from);
    };
    co_await advertiser_.start(std::move(service), std::move(onNewConnection), std::move(options));
    sampling_->start();
}

Task<> CompanionHost::publishAs(std::optional<std::string> instanceName) {
    thread_.check();
    // The daemon may take its time to withdraw.
    auto letGo = [before = advertiser_.takeBack()]() mutable { before.reset(); };
    co_await workers_.run(std::move(letGo));
    advertiser_.publishAs(std::move(instanceName), pairing_->requiresPairing());
}

void CompanionHost::allowOrigins(std::vector<WebOrigin> origins) {
    thread_.check();
    advertiser_.useGate(BrowserGate(hostName_, std::move(origins)));
}

std::shared_ptr<NavDatabase> CompanionHost::useNavDatabase(std::shared_ptr<NavDatabase> navDatabase) {
    navDatabase_->with([&](auto& present) { present.database.swap(navDatabase); });
    return navDatabase;
}

void CompanionHost::expectNavDatabase(bool isExpected) {
    navDatabase_->with([&](auto& present) { present.isAnotherExpected = isExpected; });
}

void CompanionHost::setStageWatched(bool isWatched) {
    thread_.check();
    *isStageWatched_ = isWatched;
    tellWatched_();
}

void CompanionHost::stop() {
    thread_.check();
    *isStopping_ = true;
    sampling_->stop();
    advertiser_.stop();
    server_->cancelAll();
    recording_->stop();
}

} // namespace tarnly
