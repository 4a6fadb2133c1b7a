#include "TarnlyXPlane/ReconnectingBackend.hpp"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "TarnlyPlatform/Base/WithinLimit.hpp"

namespace tarnly {
namespace {

/// Moving the aircraft waits for the ground to be loaded.
constexpr std::chrono::seconds movePause(2);
/// A command may be answered late.
constexpr std::chrono::seconds commandLimit(60);

} // namespace

ReconnectingBackend::ReconnectingBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                                         std::shared_ptr<XPlaneTransport> transport, Clock& clock,
                                         WorkerPool& workers)
    : clock_(clock),
      makeLink_([=, &clock, &workers](std::int64_t number) {
          return std::make_shared<XPlaneBackend>(executor, endpoint, transport, clock, workers, number);
      }),
      withoutLink_(makeLink_(0)),
      keeper_(std::make_shared<LinkKeeper>(executor, endpoint, clock, makeLink_)) {}

ReconnectingBackend::~ReconnectingBackend() { close(); }

void ReconnectingBackend::close() {
    keeper_->close();
    withoutLink_->close();
}

/// Holds the link, since an operation that takes too long is left to itself until it notices.
template <typename Operation>
std::invoke_result_t<Operation, XPlaneBackend&> ReconnectingBackend::runOn(LinkKeeper::Link link,
                                                                           Operation operation) {
    auto task = operation(*link);
    co_return co_await std::move(task);
}

template <typename Operation>
std::invoke_result_t<Operation, XPlaneBackend&> ReconnectingBackend::onLink(Clock::Duration limit,
                                                                            Operation operation) {
    thread_.check();
    const auto keeper = keeper_;
    const auto deadline = clock_.now() + limit;
    const auto linkDeadline = std::min(deadline, clock_.now() + requestLimit);
    for (;;) {
        const auto link = co_await keeper->linkBy(linkDeadline);
        const auto left = deadline - clock_.now();
        try {
            auto task = runOn(link, operation);
            auto result = co_await withinLimit(clock_, left, std::move(task));
            if (!result) throw keeper->timedOut();
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

SimInfo ReconnectingBackend::simInfo() {
    thread_.check();
    SimInfo info;
    info.sim = "xplane";
    info.version = keeper_->version();
    return info;
}

std::optional<std::vector<double>> ReconnectingBackend::presentDatarefs(
    const std::vector<std::string>& names) {
    thread_.check();
    const auto link = keeper_->present();
    return link ? link->presentDatarefs(names) : std::nullopt;
}

Task<std::vector<double>> ReconnectingBackend::getDatarefs(
    std::shared_ptr<const std::vector<std::string>> names) {
    if (names->empty()) co_return std::vector<double>();
    auto read = [names](XPlaneBackend& link) { return link.getDatarefs(names); };
    try {
        auto values = co_await onLink(requestLimit, std::move(read));
        co_return values;
    } catch (const NetworkError& error) {
        // Whoever reads is told the same, wherever the simulator has fallen silent.
        if (error.which() != NetworkError::Case::timedOut) throw;
    }
    throw XPlaneBackendError(XPlaneBackendError::Case::timeout, names->front());
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

Task<> ReconnectingBackend::lookAnew(Clock::Duration limit) {
    thread_.check();
    const auto keeper = keeper_;
    const auto deadline = clock_.now() + limit;
    try {
        co_await keeper->linkBy(deadline);
    } catch (const NetworkError&) {
        // The stage has it.
    }
}

bool ReconnectingBackend::isProven(std::int64_t link, Clock::TimePoint moment) const {
    const auto present = keeper_->present();
    return present && present->isProven(link, moment);
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
    withoutLink_->setSituationsDirectory(std::move(path));
}

Task<std::vector<FlightListing>> ReconnectingBackend::listFlights() { return withoutLink_->listFlights(); }

Task<> ReconnectingBackend::loadFlight(std::string path) { return withoutLink_->loadFlight(std::move(path)); }

} // namespace tarnly
