#include "TarnlyXPlane/LinkKeeper.hpp"

#include <algorithm>
#include <utility>

#include "TarnlyPlatform/Base/WithinLimit.hpp"

namespace tarnly {
namespace {

using Kind = SimulatorStage::Kind;

/// An attempt that takes longer than that has met a simulator that says nothing.
constexpr std::chrono::seconds silentAttempt(2);
/// How often a request that waits for the next attempt looks whether it has begun.
constexpr std::chrono::milliseconds attemptLook(10);

} // namespace

LinkKeeper::LinkKeeper(boost::asio::any_io_executor executor, Endpoint endpoint, Clock& clock,
                       MakeLink makeLink)
    : executor_(std::move(executor)),
      endpoint_(std::move(endpoint)),
      clock_(clock),
      makeLink_(std::move(makeLink)),
      tasks_(executor_),
      wanted_(executor_),
      version_(XPlaneBackend::unknownVersion) {}

void LinkKeeper::start() {
    thread_.check();
    tasks_.keepUp([weak = weak_from_this()] { return keepLink(weak.lock()); });
}

void LinkKeeper::close() {
    if (std::exchange(isClosed_, true)) return;
    tasks_.cancel();
    isConnected_ = false;
    if (link_) link_->close();
    finishAttempt(std::make_exception_ptr(closed()));
}

Task<bool> LinkKeeper::join(Clock::Duration limit) {
    const auto deadline = clock_.now() + limit;
    bool hasEnded = co_await tasks_.join(clock_, limit);
    if (hasEnded && link_) {
        const auto left = deadline - clock_.now();
        hasEnded = co_await link_->join(left);
    }
    co_return hasEnded;
}

// One link after the other

Task<> LinkKeeper::keepLink(std::shared_ptr<LinkKeeper> keeper) {
    while (!keeper->isClosed_) {
        bool isBroken = false;
        try {
            co_await keeper->attempt();
        } catch (const std::exception&) {
            isBroken = true; // out of memory, say; or told to end
            keeper->finishAttempt(std::current_exception());
        }
        if (isBroken && !keeper->isClosed_) {
            co_await keeper->clock_.sleepFor(longestWatchedPause);
        }
    }
}

Task<> LinkKeeper::attempt() {
    attempt_ = std::make_shared<SharedAttempt>(executor_);
    isWanted_ = false;
    link_ = makeLink_(++links_);
    link_->onStageChange([weak = weak_from_this()] {
        if (const auto keeper = weak.lock()) keeper->tellIfChanged();
    });
    const auto link = link_;
    TaskGroup watching(executor_);
    watching.spawn(sayIfSilent(shared_from_this(), links_), dropFailure);
    co_await connect(link);
    watching.cancel();
    if (isConnected_) {
        co_await stayConnected(link);
    }
    if (!isClosed_ && lastFailure_) {
        co_await pauseBeforeNext();
    }
}

Task<> LinkKeeper::connect(Link link) {
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

Task<> LinkKeeper::stayConnected(Link link) {
    const auto begin = clock_.now();
    co_await link->ended();
    noteVersion();
    isConnected_ = false;
    // Until the next attempt knows more; most often that is at once.
    stageWithoutLink_ = toldStage_.kind == Kind::silent ? toldStage_ : SimulatorStage();
    link->close();
    if (clock_.now() - begin < shortLife) {
        noteFailure(std::make_exception_ptr(closed()));
        tellIfChanged();
    } else {
        pause_ = shortestPause;
    }
}

void LinkKeeper::noteFailure(const std::exception_ptr& failure) {
    lastFailure_ = failure;
    lastFailureAt_ = clock_.now();
    const auto before = std::exchange(stageWithoutLink_, SimulatorStage());
    try {
        std::rethrow_exception(failure);
    } catch (const LinkFailure& known) {
        stageWithoutLink_ = known.stage();
        const bool isSilent = stageWithoutLink_.kind == Kind::silent;
        if (isSilent) stageWithoutLink_.silentSince = before.silentSince.value_or(lastFailureAt_);
    } catch (const std::exception&) {
        // That tells nothing of the simulator.
    }
}

void LinkKeeper::finishAttempt(const std::exception_ptr& failure) {
    if (const auto attempt = std::exchange(attempt_, nullptr)) attempt->finish(failure);
}

/// A simulator that takes the connection and answers nothing keeps an attempt waiting.
Task<> LinkKeeper::sayIfSilent(std::shared_ptr<LinkKeeper> keeper, std::int64_t number) {
    co_await keeper->clock_.sleepFor(silentAttempt);
    const bool isOver = number != keeper->links_ || keeper->isConnected_ || keeper->isClosed_;
    if (isOver || keeper->stageWithoutLink_.kind == Kind::silent) co_return;
    keeper->stageWithoutLink_ = SimulatorStage();
    keeper->stageWithoutLink_.kind = Kind::silent;
    keeper->stageWithoutLink_.silentSince = keeper->clock_.now() - silentAttempt;
    keeper->tellIfChanged();
}

Clock::Duration LinkKeeper::currentPause() const {
    if (isWanted_) return shortestPause;
    const Clock::Duration longest = isWatched_ ? longestWatchedPause : longestPause;
    return std::min(pause_, longest);
}

Task<> LinkKeeper::pauseBeforeNext() {
    while (!isClosed_) {
        const auto left = lastFailureAt_ + currentPause() - clock_.now();
        if (left <= Clock::Duration::zero()) break;
        co_await waitFor(wanted_, clock_, left);
    }
    pause_ = std::min(pause_ * 2, Clock::Duration(longestPause));
}

void LinkKeeper::setWatched(bool isWatched) {
    thread_.check();
    if (std::exchange(isWatched_, isWatched) == isWatched || !isWatched) return;
    pause_ = shortestPause;
    wanted_.notifyAll();
}

// What others see of it

SimulatorStage LinkKeeper::stage() const {
    const auto link = present();
    return link ? link->stage() : stageWithoutLink_;
}

void LinkKeeper::tellIfChanged() {
    auto found = stage();
    if (found == toldStage_) return;
    toldStage_ = std::move(found);
    if (tellStageChange_) tellStageChange_();
}

void LinkKeeper::noteVersion() {
    if (link_ && link_->version() != XPlaneBackend::unknownVersion) version_ = link_->version();
}

std::string LinkKeeper::version() const {
    const bool isKnown = isConnected_ && link_->version() != XPlaneBackend::unknownVersion;
    return isKnown ? link_->version() : version_;
}

NetworkError LinkKeeper::timedOut() const { return {NetworkError::Case::timedOut, describe(endpoint_)}; }

NetworkError LinkKeeper::closed() const {
    return {NetworkError::Case::connectionClosed, describe(endpoint_)};
}

Task<LinkKeeper::Link> LinkKeeper::linkBy(Clock::TimePoint deadline) {
    const auto linksBefore = links_;
    for (;;) {
        if (isClosed_) throw closed();
        if (auto link = present()) co_return link;
        const auto left = deadline - clock_.now();
        if (left <= Clock::Duration::zero()) throw timedOut();
        if (attempt_) {
            const auto attempt = attempt_;
            const bool isDecided = co_await withinLimit(clock_, left, SharedAttempt::wait(attempt));
            if (!isDecided) throw timedOut();
            continue;
        }
        // Between attempts: one that has begun since then speaks for this request.
        if (links_ != linksBefore && lastFailure_) std::rethrow_exception(lastFailure_);
        isWanted_ = true;
        wanted_.notifyAll();
        co_await clock_.sleepFor(attemptLook);
    }
}

} // namespace tarnly
