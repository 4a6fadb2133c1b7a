#include "TarnlyXPlane/ReconnectingBackend.hpp"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "TarnlyPlatform/Base/WithinLimit.hpp"

namespace tarnly {
namespace {

namespace asio = boost::asio;
using Kind = SimulatorStage::Kind;

constexpr std::string_view unknownVersion = "unknown";

/// An attempt that takes longer than that has met a simulator that says nothing.
constexpr std::chrono::seconds silentAttempt(2);
/// Moving the aircraft waits for the ground to be loaded.
constexpr std::chrono::seconds movePause(2);
/// A command may be answered late.
constexpr std::chrono::seconds commandLimit(60);
/// A link that ends before that counts as an attempt that has failed.
constexpr std::chrono::seconds shortLife(5);
/// How often a request that waits for the next attempt looks whether it has begun.
constexpr std::chrono::milliseconds attemptLook(10);

} // namespace

ReconnectingBackend::ReconnectingBackend(asio::any_io_executor executor, Endpoint endpoint,
                                         std::shared_ptr<XPlaneTransport> transport, Clock& clock,
                                         WorkerPool& workers)
    : executor_(std::move(executor)),
      endpoint_(std::move(endpoint)),
      transport_(std::move(transport)),
      clock_(clock),
      workers_(workers),
      tasks_(executor_),
      wanted_(executor_) {}

ReconnectingBackend::~ReconnectingBackend() { close(); }

void ReconnectingBackend::start() {
    thread_.check();
    tasks_.spawn(keepLink(shared_from_this()), dropFailure);
}

void ReconnectingBackend::close() {
    if (std::exchange(isClosed_, true)) return;
    tasks_.cancel();
    isConnected_ = false;
    if (link_) link_->close();
    finishAttempt(
        std::make_exception_ptr(NetworkError(NetworkError::Case::connectionClosed, describe(endpoint_))));
}

Task<bool> ReconnectingBackend::join(Clock::Duration limit) {
    const auto deadline = clock_.now() + limit;
    bool hasEnded = co_await tasks_.join(clock_, limit);
    if (hasEnded && link_) {
        const auto left = deadline - clock_.now();
        hasEnded = co_await link_->join(left);
    }
    co_return hasEnded;
}

// One link after the other

Task<> ReconnectingBackend::keepLink(std::shared_ptr<ReconnectingBackend> backend) {
    while (!backend->isClosed_) {
        co_await backend->attempt();
    }
}

ReconnectingBackend::Link ReconnectingBackend::makeLink() {
    auto link = std::make_shared<XPlaneBackend>(executor_, endpoint_, transport_, clock_, workers_, ++links_);
    link->setSituationsDirectory(situationsDirectory_.copy());
    link->onStageChange([weak = weak_from_this()] {
        if (const auto backend = weak.lock()) backend->tellIfChanged();
    });
    return link;
}

Task<> ReconnectingBackend::attempt() {
    attempt_ = std::make_shared<SharedAttempt>(executor_);
    isWanted_ = false;
    link_ = makeLink();
    const auto link = link_;
    TaskGroup watching(executor_);
    watching.spawn(sayIfSilent(links_), dropFailure);
    co_await connect(link);
    watching.cancel();
    if (isConnected_) {
        co_await stayConnected(link);
    }
    if (!isClosed_ && lastFailure_) {
        co_await pauseBeforeNext();
    }
}

Task<> ReconnectingBackend::stayConnected(Link link) {
    const auto begin = clock_.now();
    co_await link->ended();
    const auto info = co_await link->simInfo();
    if (info.version != unknownVersion) version_ = info.version;
    isConnected_ = false;
    // Until the next attempt knows more; most often that is at once.
    stageWithoutLink_ = SimulatorStage();
    link->close();
    const bool wasShort = clock_.now() - begin < shortLife;
    if (wasShort) {
        lastFailure_ =
            std::make_exception_ptr(NetworkError(NetworkError::Case::connectionClosed, describe(endpoint_)));
        lastFailureAt_ = clock_.now();
    } else {
        pause_ = shortestPause;
    }
}

Task<> ReconnectingBackend::connect(Link link) {
    std::exception_ptr failure;
    try {
        co_await link->connect();
    } catch (const std::exception&) {
        failure = std::current_exception();
    }
    if (isClosed_) co_return;
    if (failure) {
        noteFailure(failure);
        link->close();
    } else {
        isConnected_ = true;
        lastFailure_ = nullptr;
    }
    tellIfChanged();
    finishAttempt(failure);
}

void ReconnectingBackend::noteFailure(const std::exception_ptr& failure) {
    lastFailure_ = failure;
    lastFailureAt_ = clock_.now();
    stageWithoutLink_ = SimulatorStage();
    try {
        std::rethrow_exception(failure);
    } catch (const LinkFailure& known) {
        stageWithoutLink_ = known.stage();
    } catch (const std::exception&) {
        // Out of memory, say: that tells nothing of the simulator.
    }
}

void ReconnectingBackend::finishAttempt(const std::exception_ptr& failure) {
    if (const auto attempt = std::exchange(attempt_, nullptr)) attempt->finish(failure);
}

/// A simulator that takes the connection and answers nothing keeps an attempt waiting.
Task<> ReconnectingBackend::sayIfSilent(std::int64_t number) {
    const auto self = shared_from_this();
    co_await clock_.sleepFor(silentAttempt);
    if (number != links_ || isConnected_ || isClosed_ || stageWithoutLink_.kind == Kind::silent) co_return;
    stageWithoutLink_ = SimulatorStage();
    stageWithoutLink_.kind = Kind::silent;
    stageWithoutLink_.silentSince = clock_.now() - silentAttempt;
    tellIfChanged();
}

Clock::Duration ReconnectingBackend::currentPause() const {
    const Clock::Duration longest = isWatched_ ? longestWatchedPause : longestPause;
    return std::min(pause_, longest);
}

Task<> ReconnectingBackend::pauseBeforeNext() {
    for (;;) {
        if (isClosed_) co_return;
        const Clock::Duration pause = isWanted_ ? Clock::Duration(shortestPause) : currentPause();
        const auto left = lastFailureAt_ + pause - clock_.now();
        if (left <= Clock::Duration::zero()) break;
        co_await waitFor(wanted_, clock_, left);
    }
    pause_ = std::min(pause_ * 2, Clock::Duration(longestPause));
}

void ReconnectingBackend::setWatched(bool isWatched) {
    thread_.check();
    if (std::exchange(isWatched_, isWatched) == isWatched) return;
    if (isWatched) {
        pause_ = shortestPause;
        wanted_.notifyAll();
    }
}

// The stage

SimulatorStage ReconnectingBackend::stage() const {
    return isConnected_ && link_ && !link_->hasEnded() ? link_->stage() : stageWithoutLink_;
}

void ReconnectingBackend::tellIfChanged() {
    auto present = stage();
    if (present == toldStage_) return;
    toldStage_ = std::move(present);
    if (tellStageChange_) tellStageChange_();
}

// Operations

NetworkError ReconnectingBackend::timedOut() const {
    return {NetworkError::Case::timedOut, describe(endpoint_)};
}

Task<ReconnectingBackend::Link> ReconnectingBackend::linkBy(Clock::TimePoint deadline) {
    const auto linksBefore = links_;
    for (;;) {
        if (isClosed_) throw NetworkError(NetworkError::Case::connectionClosed, describe(endpoint_));
        if (isConnected_ && !link_->hasEnded()) co_return link_;
        const auto left = deadline - clock_.now();
        if (left <= Clock::Duration::zero()) throw timedOut();
        if (attempt_) {
            const auto attempt = attempt_;
            const bool isDecided = co_await withinLimit(clock_, left, attempt->wait());
            if (!isDecided) throw timedOut();
            continue;
        }
        // Between attempts: one that has begun since then speaks for this request; else it has one begin soon.
        if (links_ != linksBefore && lastFailure_) std::rethrow_exception(lastFailure_);
        isWanted_ = true;
        wanted_.notifyAll();
        co_await clock_.sleepFor(attemptLook);
    }
}

/// Holds the link, since an operation that takes too long is left to itself until it notices.
template <typename Operation>
std::invoke_result_t<Operation, XPlaneBackend&> ReconnectingBackend::runOn(Link link, Operation operation) {
    auto task = operation(*link);
    co_return co_await std::move(task);
}

template <typename Operation>
std::invoke_result_t<Operation, XPlaneBackend&> ReconnectingBackend::onLink(Clock::Duration limit,
                                                                            Operation operation) {
    thread_.check();
    const auto self = shared_from_this();
    const auto deadline = clock_.now() + limit;
    const auto linkDeadline = std::min(deadline, clock_.now() + requestLimit);
    for (;;) {
        const auto link = co_await linkBy(linkDeadline);
        const auto left = deadline - clock_.now();
        try {
            auto task = runOn(link, operation);
            auto result = co_await withinLimit(clock_, left, std::move(task));
            if (!result) throw timedOut();
            if constexpr (std::is_same_v<decltype(result), bool>) {
                co_return;
            } else {
                co_return std::move(*result);
            }
        } catch (const LinkEnded&) {
            if (clock_.now() >= deadline) throw;
        }
    }
}

Task<SimInfo> ReconnectingBackend::simInfo() {
    thread_.check();
    SimInfo info;
    info.sim = "xplane";
    info.version = version_;
    if (isConnected_) {
        const auto present = co_await link_->simInfo();
        if (present.version != unknownVersion) info.version = present.version;
    }
    co_return info;
}

Task<std::vector<double>> ReconnectingBackend::getDatarefs(
    std::shared_ptr<const std::vector<std::string>> names) {
    const auto first = names->empty() ? std::string() : names->front();
    auto read = [names = std::move(names)](XPlaneBackend& link) { return link.getDatarefs(names); };
    try {
        auto values = co_await onLink(requestLimit, std::move(read));
        co_return values;
    } catch (const NetworkError& error) {
        // Whoever reads is told the same, wherever the simulator has fallen silent.
        if (error.which() != NetworkError::Case::timedOut) throw;
    }
    throw XPlaneBackendError(XPlaneBackendError::Case::timeout, first);
}

Task<> ReconnectingBackend::setDataref(std::string name, double value, std::optional<std::int64_t> index) {
    auto write = [name = std::move(name), value, index](XPlaneBackend& link) {
        return link.setDataref(name, value, index);
    };
    co_await onLink(requestLimit, std::move(write));
}

Task<> ReconnectingBackend::runCommand(std::string name) {
    auto run = [name = std::move(name)](XPlaneBackend& link) { return link.runCommand(name); };
    co_await onLink(commandLimit, std::move(run));
}

Task<SampleObservation> ReconnectingBackend::getTrackSample() {
    auto look = [](XPlaneBackend& link) { return link.getTrackSample(); };
    auto seen = co_await onLink(sampleLimit, std::move(look));
    co_return seen;
}

bool ReconnectingBackend::isProven(std::int64_t link, Clock::TimePoint moment) const {
    return isConnected_ && !link_->hasEnded() && link_->isProven(link, moment);
}

Task<> ReconnectingBackend::moveToPreservingAgl(double latitude, double longitude) {
    auto move = [latitude, longitude](XPlaneBackend& link) {
        return link.moveToPreservingAgl(latitude, longitude);
    };
    co_await onLink(requestLimit + movePause, std::move(move));
}

Task<> ReconnectingBackend::applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) {
    auto apply = [=](XPlaneBackend& link) { return link.applyAttitude(pitchDeg, bankDeg, iasKts, throttle); };
    co_await onLink(requestLimit, std::move(apply));
}

// What needs no link

void ReconnectingBackend::setSituationsDirectory(std::optional<std::string> path) {
    situationsDirectory_.with([&](std::optional<std::string>& directory) { directory = std::move(path); });
}

Task<std::vector<FlightListing>> ReconnectingBackend::listFlights() {
    thread_.check();
    const auto link = link_ ? link_ : makeLink();
    link->setSituationsDirectory(situationsDirectory_.copy());
    auto flights = co_await link->listFlights();
    co_return flights;
}

Task<> ReconnectingBackend::loadFlight(std::string path) {
    thread_.check();
    const auto link = link_ ? link_ : makeLink();
    co_await link->loadFlight(std::move(path));
}

} // namespace tarnly
