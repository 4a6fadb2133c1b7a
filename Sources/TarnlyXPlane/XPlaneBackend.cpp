#include "TarnlyXPlane/XPlaneBackend.hpp"

#include <filesystem>
#include <span>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"
#include "TarnlyXPlane/Attitude.hpp"
#include "TarnlyXPlane/DatarefReading.hpp"
#include "TarnlyXPlane/Datarefs.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"
#include "TarnlyXPlane/TrackSampleReading.hpp"

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

constexpr std::uint16_t commandPort = 49000;
constexpr std::chrono::seconds settleDelay(2);
/// After the sample's datarefs have been asked for.
constexpr auto altitudePatience = datarefPatience;

Phrase leftOutText(const std::string& directory, std::size_t count) {
    return Phrase::of(
        "Saved flights in %1 whose names are not UTF-8 are left out (%2); give them other names.",
        printable(directory), count);
}

Phrase unreadableText(const std::string& directory, const std::string& why) {
    return Phrase::of(
        "The saved flights in %1 cannot be listed: %2. See that you may read the folder and what is in it, "
        "and that its disk is well.",
        printable(directory), printable(why));
}

std::vector<std::int64_t> knownIds(const Catalogue& catalogue, std::span<const std::string_view> names) {
    std::vector<std::int64_t> known;
    for (const auto name : names) {
        if (const auto id = catalogue.idOf(std::string(name))) known.push_back(*id);
    }
    return known;
}

bool isSuccess(const HttpResponse& response) { return 200 <= response.status && response.status <= 299; }

} // namespace

XPlaneBackend::XPlaneBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                             std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers,
                             std::int64_t number, Situations situations)
    : host_(endpoint.host),
      number_(number),
      link_(std::make_shared<WebApiLink>(executor, std::move(endpoint), transport, clock, workers)),
      transport_(std::move(transport)),
      clock_(clock),
      listings_(executor, std::move(situations.list)),
      existence_(executor, std::move(situations.exists)),
      asking_(std::move(executor)) {}

XPlaneBackend::~XPlaneBackend() { close(); }

void XPlaneBackend::close() {
    asking_.cancel();
    listings_.close();
    existence_.close();
    link_->close();
}

Task<> XPlaneBackend::connect() {
    co_await link_->ensureConnected();
    if (link_->hasEnded()) throw LinkEnded(NetworkError::Case::connectionClosed, link_->webSocketUrl());
    link_->watch([this] {
        if (tellStageChange_) tellStageChange_();
    });
    asking_.spawn(askVersion(link_, version_), dropFailure);
}

Task<> XPlaneBackend::askVersion(std::shared_ptr<WebApiLink> link, std::shared_ptr<std::string> version) {
    const auto found = co_await link->version();
    if (found) *version = *found;
}

SimulatorStage XPlaneBackend::stage() const {
    SimulatorStage stage;
    if (link_->hasEnded() || !link_->isConnected()) return stage;
    stage.kind = SimulatorStage::Kind::flightLoaded;
    if (link_->isAtMainMenu()) stage.kind = SimulatorStage::Kind::mainMenu;
    if (link_->isSilent()) {
        stage.kind = SimulatorStage::Kind::silent;
        stage.silentSince = link_->lastSign();
    }
    return stage;
}

void XPlaneBackend::throwIfSilent(const std::string& what) const {
    if (link_->isSilent()) throw XPlaneBackendError(Case::timeout, what);
}

SimInfo XPlaneBackend::simInfo() {
    SimInfo info;
    info.sim = "xplane";
    info.version = *version_;
    return info;
}

Task<std::vector<double>> XPlaneBackend::getDatarefs(std::shared_ptr<const std::vector<std::string>> names) {
    thread_.check();
    if (names->empty()) co_return std::vector<double>();
    co_await link_->ensureConnected();
    throwIfSilent(names->front());
    auto values = co_await readDatarefs(link_, clock_, std::move(names));
    co_return values;
}

std::optional<std::vector<double>> XPlaneBackend::presentDatarefs(const std::vector<std::string>& names) {
    thread_.check();
    if (!link_->isConnected() || link_->isSilent()) return std::nullopt;
    return presentValues(*link_, names);
}

Task<double> XPlaneBackend::getDataref(std::string name) {
    std::vector<std::string> names;
    names.push_back(std::move(name));
    auto shared = std::make_shared<const std::vector<std::string>>(std::move(names));
    const auto values = co_await getDatarefs(std::move(shared));
    co_return values.front();
}

Task<> XPlaneBackend::setDataref(std::string name, double value, std::optional<std::int64_t> index) {
    thread_.check();
    co_await link_->ensureConnected();
    throwIfSilent(name);
    const auto id = co_await findId(link_, link_->datarefs(), name);
    if (!id) throw unknownName(*link_, Case::unknownDataref, name);
    std::vector<DatarefEntry> written(1);
    written.front().id = *id;
    written.front().value = value;
    written.front().index = index;
    co_await link_->send(WebApiType::setValues, std::move(written));
}

Task<> XPlaneBackend::runCommand(std::string name) {
    thread_.check();
    co_await link_->ensureConnected();
    throwIfSilent(name);
    const auto id = co_await commandId(name);
    const auto path = "command/" + std::to_string(id) + "/activate";
    try {
        const auto response = co_await activate(path);
        if (isSuccess(response)) co_return;
    } catch (const NetworkError& error) {
        if (error.which() != NetworkError::Case::invalidResponse) throw;
    }
    throw XPlaneBackendError(Case::commandFailed, name);
}

/// An activation may take long, finding its id may not.
Task<std::int64_t> XPlaneBackend::commandId(std::string name) {
    constexpr std::chrono::seconds limit(5);
    auto finding = findId(link_, link_->commands(), name);
    const auto found = co_await withinLimit(clock_, limit, std::move(finding));
    if (!found) throw XPlaneBackendError(Case::timeout, name);
    if (!*found) throw XPlaneBackendError(Case::unknownCommand, name);
    co_return **found;
}

Task<HttpResponse> XPlaneBackend::activate(std::string path) {
    auto response = co_await link_->post(path, "");
    if (response.status == 400) {
        // Some versions of the simulator insist on a duration.
        const std::string duration = R"({"duration":0})";
        response = co_await link_->post(path, duration);
    }
    co_return response;
}

bool XPlaneBackend::hasAltitude() const {
    const auto id = link_->datarefs().idOf(std::string(datarefs::indicatedAltitude));
    return id && link_->values().scalar(*id);
}

Task<> XPlaneBackend::ensureSampleRefsSubscribed() {
    auto ids = knownIds(link_->datarefs(), datarefs::samples);
    const bool hasFlapRatio = link_->datarefIds().contains(std::string(datarefs::flapRatio));
    const auto standIn = link_->datarefs().idOf(std::string(datarefs::flapRequestRatio));
    if (!hasFlapRatio && standIn) ids.push_back(*standIn);
    auto positions = knownIds(link_->datarefs(), datarefs::positions);
    const bool lacksOne = positions.size() < datarefs::positions.size() ||
                          !link_->datarefIds().contains(std::string(datarefs::indicatedAltitude));
    if (lacksOne) link_->refreshAside(link_->datarefs()); // they may come late
    link_->setPositionIds(std::move(positions));
    co_await link_->subscribe(ids);
    if (!altitudeWaitEnd_) altitudeWaitEnd_ = clock_.now() + altitudePatience;
    while (!hasAltitude() && !link_->hasEnded() && clock_.now() < *altitudeWaitEnd_) {
        co_await WebApiLink::moreValues(link_, *altitudeWaitEnd_);
    }
}

Task<SampleObservation> XPlaneBackend::getTrackSample() {
    thread_.check();
    co_await link_->ensureConnected();
    throwIfSilent("track sample");
    if (link_->isAtMainMenu()) {
        link_->refreshAside(link_->datarefs()); // a recording waits for the flight
        throw unknownName(*link_, Case::timeout, "track sample");
    }
    co_await ensureSampleRefsSubscribed();
    if (link_->hasEnded()) throw LinkEnded(NetworkError::Case::connectionClosed, link_->webSocketUrl());
    auto seen = readTrackSample(link_->datarefIds(), link_->values());
    seen.link = number_;
    seen.takenAt = clock_.now();
    link_->proveStandstill();
    co_return seen;
}

bool XPlaneBackend::isProven(std::int64_t link, Clock::TimePoint moment) const {
    return link == number_ && link_->isProven(moment);
}

void XPlaneBackend::setSituationsDirectory(std::optional<std::string> path) {
    situated_.with([&](Situated& present) {
        if (present.directory == path) return;
        present = {std::move(path), {}};
    });
}

std::vector<Phrase> XPlaneBackend::warnings() const { return situated_.copy().warnings; }

Task<std::vector<FlightListing>> XPlaneBackend::listFlights() {
    const auto directory = situated_.copy().directory;
    if (!directory) throw XPlaneBackendError(Case::situationsDirectoryNotConfigured);
    auto listing = listings_.at(*directory);
    SituationList list;
    try {
        list = co_await inTime(std::move(listing));
    } catch (const std::filesystem::filesystem_error& error) {
        noteListing(*directory, {}, unreadableText(*directory, error.what()));
        throw;
    }
    noteListing(*directory, list.leftOut > 0 ? leftOutText(*directory, list.leftOut) : Phrase(),
                list.failure.empty() ? Phrase() : unreadableText(*directory, list.failure));
    co_return std::move(list.flights);
}

template <typename Result>
Task<Result> XPlaneBackend::inTime(Task<Result> look) {
    auto found = co_await withinLimit(clock_, situationsLimit, std::move(look));
    if (!found) throw XPlaneBackendError(Case::timeout, "situations");
    co_return std::move(*found);
}

void XPlaneBackend::noteListing(const std::string& directory, Phrase leftOut, Phrase unreadable) {
    if (!leftOut.empty() && warn_ && !std::exchange(hasWarnedOfLeftOut_, true)) warn_(leftOut);
    if (!unreadable.empty() && warn_ && !std::exchange(hasWarnedOfUnreadable_, true)) warn_(unreadable);
    situated_.with([&](Situated& present) {
        if (present.directory != directory) return; // by now it is another one
        present.warnings.clear();
        for (auto* text : {&leftOut, &unreadable})
            if (!text->empty()) present.warnings.push_back(std::move(*text));
    });
}

Task<> XPlaneBackend::loadFlight(std::string path) {
    thread_.check();
    auto look = existence_.at(path);
    const bool exists = co_await inTime(std::move(look));
    if (!exists) throw XPlaneBackendError(Case::flightNotFound, path);
    Endpoint destination;
    destination.host = host_;
    destination.port = commandPort;
    auto packet = buildSimoLoadSituationPacket(relativeSituationPath(path));
    co_await transport_->sendDatagram(std::move(destination), std::move(packet));
}

Task<> XPlaneBackend::setDatarefNamed(std::string_view name, double value) {
    return setDataref(std::string(name), value, std::nullopt);
}

Task<> XPlaneBackend::setPosition(double latitude, double longitude, double elevation) {
    co_await setDatarefNamed(datarefs::latitude, latitude);
    co_await setDatarefNamed(datarefs::longitude, longitude);
    co_await setDatarefNamed(datarefs::elevation, elevation);
}

Task<> XPlaneBackend::moveToPreservingAgl(double latitude, double longitude) {
    const std::string aboveGround(datarefs::aboveGround);
    const std::string elevation(datarefs::elevation);
    const double aglBefore = co_await getDataref(aboveGround);
    const double elevationBefore = co_await getDataref(elevation);
    try {
        co_await setPosition(latitude, longitude, elevationBefore);
        co_await clock_.sleepFor(settleDelay);
        const double aglAfter = co_await getDataref(aboveGround);
        co_await setPosition(latitude, longitude, elevationBefore + (aglBefore - aglAfter));
    } catch (const LinkEnded& half) {
        // Half done: on the next link it would begin from another place.
        throw NetworkError(half);
    }
}

Task<> XPlaneBackend::applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) {
    const std::string elevationName(datarefs::elevation);
    const std::string headingName(datarefs::psi);
    const double elevation = co_await getDataref(elevationName);
    const double heading = co_await getDataref(headingName);
    const auto velocity = localVelocity(iasKts, elevation, pitchDeg, heading);
    co_await setDatarefNamed(datarefs::theta, pitchDeg);
    co_await setDatarefNamed(datarefs::phi, bankDeg);
    co_await setDatarefNamed(datarefs::localVx, velocity.x);
    co_await setDatarefNamed(datarefs::localVy, velocity.y);
    co_await setDatarefNamed(datarefs::localVz, velocity.z);
    co_await setDatarefNamed(datarefs::rollRate, 0);
    co_await setDatarefNamed(datarefs::pitchRate, 0);
    co_await setDatarefNamed(datarefs::yawRate, 0);
    co_await setDatarefNamed(datarefs::throttleRatio, throttle);
}

} // namespace tarnly
