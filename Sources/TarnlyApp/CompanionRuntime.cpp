#include "TarnlyApp/CompanionRuntime.hpp"

#include <algorithm>
#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <iterator>
#include <utility>

#include "TarnlyApp/LessonPage.hpp"
#include "TarnlyApp/ReachPage.hpp"
#include "TarnlyApp/Remark.hpp"
#include "TarnlyCore/NavData/NavFile.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Base/Descriptors.hpp"
#include "TarnlyPlatform/Base/LoopWatch.hpp"
#include "TarnlyPlatform/Base/OnceMore.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Net/ListenError.hpp"
#include "TarnlyPlatform/Net/NetworkAddresses.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly {
namespace {

/// Time for the last answers and the closing handshakes at the end.
constexpr auto closingPatience = std::chrono::milliseconds(300);

/// The DNS-SD daemon asks the network whether the name is free before it answers; who waits for the port is
/// told after this at the latest.
constexpr auto publicationPatience = std::chrono::seconds(1);

/// Well within the time that a status may take.
constexpr auto statusLook = std::chrono::seconds(1);

Phrase advertisingText(const std::optional<PublicationState>& publication) {
    if (!publication) return Phrase::of("not advertised");
    switch (publication->kind) {
        case PublicationState::Kind::published:
            return Phrase::of("advertising as \"%1\"", publication->text);
        case PublicationState::Kind::publishing:
            return Phrase::of("not advertised yet");
        case PublicationState::Kind::noDaemon:
            return Phrase::of("not advertised: no DNS-SD daemon");
        case PublicationState::Kind::refused:
            break;
    }
    return Phrase::of("not advertised: refused by the DNS-SD daemon");
}

/// Runs the loop to its end. What a handler throws, for lack of memory say, costs what it was about and
/// nothing else; it is told once a second.
void runThrough(boost::asio::io_context& loop) {
    std::optional<std::chrono::steady_clock::time_point> told;
    while (!loop.stopped()) {
        try {
            LoopWatch::run(loop);
        } catch (const std::exception& error) {
            const auto now = std::chrono::steady_clock::now();
            if (told && now - *told < std::chrono::seconds(1)) continue;
            told = now;
            std::cerr << "Tarnly: a connection or a request was given up: " << error.what() << std::endl;
        }
    }
}

/// For the log, the simulator, the DNS-SD daemon and the like: no peer takes them.
constexpr std::size_t ownDescriptors = 32;

/// As many peers as were asked for, where there are descriptors for them.
AdmissionLimits admissionFor(const CompanionOptions& options) {
    AdmissionLimits limits;
    limits.peers = options.mostClients;
    const auto taken = openDescriptors() + ownDescriptors;
    const auto descriptors = raiseDescriptorLimit();
    const auto room = descriptors > taken ? descriptors - taken : 1;
    if (room < limits.peers) {
        remark("with " + std::to_string(descriptors) + " file descriptors there is room for " +
               std::to_string(room) + " connections; raise the limit (ulimit -Hn) for more");
        limits.peers = room;
    }
    return limits;
}

std::filesystem::path absoluteDataFolder(const CompanionOptions& options) {
    return std::filesystem::absolute(dataFolder(options));
}

} // namespace

CompanionRuntime::CompanionRuntime(SettingsStore& settingsStore, CompanionOptions options)
    : settingsStore_(settingsStore), options_(std::move(options)), statusText_(Phrase::of("Starting…")) {
    settingsStore_.onPasswordChange = [this] { handOnPassword(); };
    settingsStore_.onSetupChange = [this] { handOnSetup(); };
}

CompanionRuntime::~CompanionRuntime() {
    settingsStore_.onPasswordChange = nullptr;
    settingsStore_.onSetupChange = nullptr;
}

void CompanionRuntime::warn(Phrase sentence) {
    thread_.check();
    lastingWarnings_.push_back(std::move(sentence));
}

// From any thread, once the start has begun.
std::vector<Phrase> CompanionRuntime::warnings() const {
    auto all = lastingWarnings_;
    std::ranges::copy(settingsStore_.problems(), std::back_inserter(all));
    std::ranges::copy(noticed_.copy(), std::back_inserter(all));
    if (auto problem = navDatabaseProblem_.copy()) all.push_back(std::move(*problem));
    if (const auto database = navDatabase_.copy().lock())
        std::ranges::copy(database->warnings(), std::back_inserter(all));
    if (backend_) std::ranges::copy(backend_->warnings(), std::back_inserter(all));
    if (follower_) std::ranges::copy(follower_->warnings(), std::back_inserter(all));
    return all;
}

// Who asks has what has been mended meanwhile looked for, and hears of it when asking again.
std::vector<Phrase> CompanionRuntime::presentWarnings() {
    follower_->lookAgain();
    return warnings();
}

void CompanionRuntime::start() {
    thread_.check();
    if (std::exchange(started_, true)) return;
    for (const auto& warning : warnings())
        remark(warning);
    try {
        build();
    } catch (const std::exception&) {
        return announceFailure(std::current_exception());
    }
    boost::asio::post(network_, [backend = backend_] { onceMoreWithoutMemory([&] { backend->start(); }); });
    boost::asio::post(network_, [this] { tellStatus(); });
    boost::asio::co_spawn(network_, host_->start(), [this](const std::exception_ptr& failure) {
        if (failure) return announceFailure(failure);
        tellUnusualPort();
        follower_->start();
        publicationTask_.spawn(tellHowItListens(), dropFailure);
    });
}

void CompanionRuntime::build() {
    prepareText();
    const auto setup = setupFrom(options_, settingsStore_.current());
    hasUsualPorts_ = setup.ports == portsToTry(std::nullopt);
    const auto executor = network_.get_executor();
    backend_ = std::make_shared<ReconnectingBackend>(
        executor, setup.simulator, makeNetworkTransport(executor, clock_), clock_, workers_);
    backend_->onWarning([](const Phrase& text) { remark(text); });
    if (setup.situationsFolder) backend_->setSituationsDirectory(setup.situationsFolder->string());
    host_.emplace(executor, workers_, clock_, backend_, hostConfiguration(setup));
    backend_->onStageChange([this] {
        const bool hasFlight = backend_->stage().kind == SimulatorStage::Kind::flightLoaded;
        if (follower_ && hasFlight) follower_->noteSimulator();
        if (onStageChange) onStageChange();
    });
    NavDatabaseKeeper::Means databases;
    databases.openNamed = [this](const auto& path) { return openNavDatabaseOrTell(path); };
    databases.openOwn = [this](const auto& path) { return openNavDatabase(path); };
    databases.ownFile = absoluteDataFolder(options_) / ownNavFile;
    follower_.emplace(executor, workers_, clock_, *host_, *backend_, setup, std::move(databases),
                      [](const Phrase& text) { remark(text); });
    StatusReporter::Facts facts{absoluteDataFolder(options_).string(), [this] { return statusText(); },
                                [this] { return presentWarnings(); },
                                [this] { return follower_->sources(); }};
    reporter_.emplace(*host_, *backend_, clock_, std::move(facts));
}

CompanionHost::Configuration CompanionRuntime::hostConfiguration(const CompanionSetup& setup) {
    CompanionHost::Configuration configuration;
    configuration.recordingDirectory = dataFolder(options_) / "Recordings";
    configuration.instanceName = setup.name;
    configuration.simKind = "xplane";
    configuration.appVersion = TARNLY_VERSION;
    configuration.password = settingsStore_.current().password;
    // What the command line says holds or there is no start; a setting from some day keeps no lesson away.
    configuration.navDatabase = options_.navigationDatabase ? openNavDatabase(*setup.navigationDatabase)
                                                            : openNavDatabaseOrTell(setup.navigationDatabase);
    configuration.ports = setup.ports;
    configuration.admission = admissionFor(options_);
    configuration.hostName = hostName();
    configuration.allowedOrigins = setup.allowedOrigins;
    configuration.pages = options_.hasLessonPage ? lessonPages(dataFolder(options_)) : reachPages();
    configuration.tell = [](const std::string& text) { remark(text); };
    configuration.onActivity = [this] {
        if (onActivity) onActivity();
    };
    return configuration;
}

std::shared_ptr<NavDatabase> CompanionRuntime::openNavDatabase(const std::filesystem::path& path) {
    auto opened = std::make_shared<NavDatabase>(path.string(), [](const Phrase& text) { remark(text); });
    navDatabase_.with([&](auto& present) { present = opened; });
    return opened;
}

// From any thread.
std::shared_ptr<NavDatabase> CompanionRuntime::openNavDatabaseOrTell(
    const std::optional<std::filesystem::path>& path) {
    std::optional<Phrase> problem;
    std::shared_ptr<NavDatabase> opened;
    navDatabase_.with([](auto& present) { present.reset(); });
    try {
        if (path) opened = openNavDatabase(*path);
    } catch (const NavDatabaseError& error) {
        problem = Phrase::of(
            "The navigation database of the settings cannot be used, so no fix of a script is found: %1. "
            "Name another file in the settings.",
            error.told());
        remark(*problem);
    }
    navDatabaseProblem_.with([&](auto& present) { present = std::move(problem); });
    return opened;
}

void CompanionRuntime::notice(const Phrase& text) {
    remark(text);
    noticed_.with([&](auto& all) { all.push_back(text); });
}

void CompanionRuntime::tellStatus() {
    openStatusSocket();
    if (!options_.statusFile) return;
    host_->setStageWatched(true);
    makeStatusFile();
    statusFile_->start();
}

void CompanionRuntime::openStatusSocket() {
    const auto folder = absoluteDataFolder(options_);
    try {
        statusSocket_ = std::make_unique<LocalListener>(
            network_.get_executor(), clock_, statusSocketIn(folder), [this] { return answerStatus(); });
    } catch (const std::exception& error) {
        remark(std::string("--status cannot tell of this companion: ") + error.what() +
               "; give each companion a --data-dir of its own, in which you may write");
    }
}

Task<std::string> CompanionRuntime::answerStatus() {
    // Unwatched it is looked for twice a minute only, and who has just started it asks whether it is there.
    co_await backend_->lookAnew(statusLook);
    auto encode = [status = reporter_->collect()]() mutable { return statusJson(std::move(status)); };
    auto text = co_await workers_.run(std::move(encode));
    co_return text;
}

void CompanionRuntime::makeStatusFile() {
    auto collect = [this] { return reporter_->collect(); };
    statusFile_.emplace(network_.get_executor(), workers_, clock_, *options_.statusFile, std::move(collect),
                        [](const std::string& text) { remark(text); });
}

void CompanionRuntime::run() {
    runThrough(network_);
    network_.restart();
    onceMoreWithoutMemory([this] {
        boost::asio::co_spawn(network_, close(), [this](const std::exception_ptr&) { network_.stop(); });
    });
    runThrough(network_);
}

Task<> CompanionRuntime::close() {
    publicationTask_.cancel();
    if (follower_) follower_->close();
    if (statusSocket_) statusSocket_->close();
    if (host_) host_->stop(); // whatever becomes of the status
    co_await closeStatusFile();
    if (!host_) co_return;
    backend_->close();
    const auto deadline = clock_.now() + closingPatience;
    co_await host_->join(closingPatience);
    const auto left = deadline - clock_.now();
    co_await backend_->join(left);
}

Task<> CompanionRuntime::closeStatusFile() {
    if (!options_.statusFile) co_return;
    if (!statusFile_) makeStatusFile(); // there was nothing to tell
    auto words = state_ == State::failed ? statusText() : Phrase::of("Tarnly has ended.");
    auto last = endedStatus(std::move(words), absoluteDataFolder(options_).string());
    co_await statusFile_->finish(std::move(last));
}

void CompanionRuntime::end() { network_.stop(); }

Phrase CompanionRuntime::statusText() const { return statusText_.copy(); }

std::optional<std::uint16_t> CompanionRuntime::port() const {
    if (state_ != State::listening) return std::nullopt;
    return host_->advertiser().advertisedPort();
}

void CompanionRuntime::askStatus(std::function<void(CompanionStatus)> answer) {
    if (state_ == State::failed) return; // nobody runs the network any more
    boost::asio::post(network_, [this, answer = std::move(answer)] {
        if (reporter_) answer(reporter_->collect());
    });
}

void CompanionRuntime::disconnectClient(std::int64_t id) {
    if (state_ == State::failed) return;
    boost::asio::post(network_, [this, id] {
        if (host_) host_->server().disconnect(id);
    });
}

void CompanionRuntime::doAside(std::function<void()> work) {
    if (state_ == State::failed) return;
    boost::asio::post(network_, [this, work = std::move(work)]() mutable {
        asideTasks_.spawn(workAside(std::move(work)), dropFailure);
    });
}

Task<> CompanionRuntime::workAside(std::function<void()> work) { co_await workers_.run(std::move(work)); }

void CompanionRuntime::setStatusShown(bool isShown) {
    if (state_ == State::failed) return;
    boost::asio::post(network_, [this, isShown] {
        if (host_) host_->setStageWatched(isShown || options_.statusFile);
    });
}

void CompanionRuntime::tellUnusualPort() {
    const auto port = host_->advertiser().advertisedPort();
    if (!hasUsualPorts_ || !port || (*port >= UsualPorts::first && *port <= UsualPorts::last)) return;
    notice(Phrase::of(
        "The ports %1 to %2 are all in use, so this start listens on port %3, which a firewall may keep "
        "shut. End what uses them and start again, or choose another one by --port.",
        std::to_string(UsualPorts::first), std::to_string(UsualPorts::last), std::to_string(*port)));
}

Task<> CompanionRuntime::tellHowItListens() {
    for (;;) {
        co_await host_->advertiser().publicationSettled(publicationPatience);
        const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != boost::asio::cancellation_type::none) co_return;
        announceListening();
        co_await host_->advertiser().publicationChange();
    }
}

void CompanionRuntime::announceListening() {
    const auto& advertiser = host_->advertiser();
    auto text = listeningText(advertiser.advertisedPort(), advertiser.publicationState(),
                              host_->pairing().requiresPairing());
    if (state_ != State::listening || text != statusText()) announce(State::listening, std::move(text));
}

void CompanionRuntime::announceFailure(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const ListenError& error) {
        announce(State::failed, Phrase::of("%1. End the program that has it, or choose another port in the "
                                           "settings, or by --port.",
                                           failureText(error.told())));
    } catch (const NavDatabaseError& error) {
        announce(State::failed, failureText(error.told()));
    } catch (const std::exception& error) {
        announce(State::failed, failureText(Phrase::verbatim(error.what())));
    }
}

void CompanionRuntime::announce(State state, Phrase text) {
    statusText_.with([&](Phrase& shown) { shown = std::move(text); });
    state_ = state;
    if (onStatusChange) onStatusChange();
}

void CompanionRuntime::handOnPassword() {
    thread_.check();
    if (host_) host_->pairing().setPassword(settingsStore_.current().password);
}

void CompanionRuntime::handOnSetup() {
    thread_.check();
    if (!started_ || state_ == State::failed) return;
    boost::asio::post(network_, [this, setup = setupFrom(options_, settingsStore_.current())]() mutable {
        if (follower_) follower_->follow(std::move(setup));
    });
}

Phrase listeningText(std::optional<std::uint16_t> port, const std::optional<PublicationState>& publication,
                     bool passwordRequired) {
    const auto portText = port ? std::to_string(*port) : "?";
    const auto advertising = advertisingText(publication);
    return passwordRequired
               ? Phrase::of("Listening on port %1, %2, pairing password required.", portText, advertising)
               : Phrase::of("Listening on port %1, %2, pairing open.", portText, advertising);
}

Phrase failureText(const Phrase& problem) { return Phrase::of("Failed to start: %1", problem); }

} // namespace tarnly
