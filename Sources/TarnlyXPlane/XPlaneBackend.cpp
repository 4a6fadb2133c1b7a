#include "TarnlyXPlane/XPlaneBackend.hpp"

#include <utility>

#include "TarnlyXPlane/Attitude.hpp"
#include "TarnlyXPlane/Datarefs.hpp"
#include "TarnlyXPlane/Situations.hpp"
#include "TarnlyXPlane/TrackSampleReading.hpp"

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

constexpr int polls = 50;
constexpr std::chrono::milliseconds pollInterval(20);
constexpr std::uint16_t commandPort = 49000;
constexpr std::chrono::seconds settleDelay(2);

std::int64_t idOf(const std::string& name, const IdsByName& ids, Case whenUnknown) {
    const auto found = ids.find(name);
    if (found == ids.end()) throw XPlaneBackendError(whenUnknown, name);
    return found->second;
}

std::vector<DatarefEntry> entries(const std::vector<std::int64_t>& ids) {
    std::vector<DatarefEntry> result;
    for (const auto id : ids)
        result.emplace_back().id = id;
    return result;
}

std::vector<std::int64_t> sampleIds(const IdsByName& ids) {
    std::vector<std::int64_t> known;
    for (const auto name : datarefs::samples) {
        const auto found = ids.find(std::string(name));
        if (found != ids.end()) known.push_back(found->second);
    }
    return known;
}

bool isSuccess(const HttpResponse& response) { return 200 <= response.status && response.status <= 299; }

} // namespace

XPlaneBackend::XPlaneBackend(boost::asio::any_io_executor executor, Endpoint endpoint,
                             std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers)
    : host_(endpoint.host),
      link_(std::make_shared<WebApiLink>(std::move(executor), std::move(endpoint), transport, workers)),
      transport_(std::move(transport)),
      clock_(clock),
      workers_(workers) {}

XPlaneBackend::~XPlaneBackend() { close(); }

void XPlaneBackend::close() { link_->close(); }

Task<SimInfo> XPlaneBackend::simInfo() {
    SimInfo info;
    info.sim = "xplane";
    info.version = "unknown";
    co_return info;
}

Task<double> XPlaneBackend::getDataref(std::string name) {
    thread_.check();
    co_await link_->ensureConnected();
    const auto indexed = parseIndexedName(name);
    if (indexed) {
        const double element = co_await getIndexedDataref(indexed->base, indexed->index);
        co_return element;
    }
    const auto id = idOf(name, link_->datarefIds(), Case::unknownDataref);
    auto lookup = [this, id] { return link_->values().scalar(id); };
    const double value = co_await readOrSubscribe(name, id, lookup);
    co_return value;
}

Task<std::vector<double>> XPlaneBackend::getDatarefs(std::shared_ptr<const std::vector<std::string>> names) {
    std::vector<double> values;
    for (const auto& name : *names) {
        const double value = co_await getDataref(name);
        values.push_back(value);
    }
    co_return values;
}

Task<double> XPlaneBackend::getIndexedDataref(std::string name, std::int64_t index) {
    const auto id = idOf(name, link_->datarefIds(), Case::unknownDataref);
    auto lookup = [this, id, index] { return link_->values().element(id, index); };
    const double value = co_await readOrSubscribe(name, id, lookup);
    co_return value;
}

template <typename Lookup>
Task<double> XPlaneBackend::readOrSubscribe(std::string name, std::int64_t id, Lookup lookup) {
    auto value = lookup();
    if (value) co_return *value;
    std::vector<DatarefEntry> wanted(1);
    wanted.front().id = id;
    co_await link_->send(WebApiType::subscribeValues, std::move(wanted));
    value = co_await poll(lookup);
    if (!value) throw XPlaneBackendError(Case::timeout, name);
    co_return *value;
}

template <typename Lookup>
Task<std::invoke_result_t<Lookup>> XPlaneBackend::poll(Lookup lookup) {
    for (int count = 1;; ++count) {
        auto found = lookup();
        if (found || count == polls) co_return found;
        co_await clock_.sleepFor(pollInterval);
    }
}

Task<> XPlaneBackend::setDataref(std::string name, double value, std::optional<std::int64_t> index) {
    thread_.check();
    co_await link_->ensureConnected();
    std::vector<DatarefEntry> written(1);
    written.front().id = idOf(name, link_->datarefIds(), Case::unknownDataref);
    written.front().value = value;
    written.front().index = index;
    co_await link_->send(WebApiType::setValues, std::move(written));
}

Task<> XPlaneBackend::runCommand(std::string name) {
    thread_.check();
    co_await link_->ensureConnected();
    const auto id = idOf(name, link_->commandIds(), Case::unknownCommand);
    const auto path = "command/" + std::to_string(id) + "/activate";
    try {
        auto response = co_await link_->post(path, "");
        if (response.status == 400) {
            // Some versions of the simulator insist on a duration.
            const std::string duration = R"({"duration":0})";
            response = co_await link_->post(path, duration);
        }
        if (isSuccess(response)) co_return;
    } catch (const NetworkError& error) {
        if (error.which() != NetworkError::Case::invalidResponse) throw;
    }
    throw XPlaneBackendError(Case::commandFailed, name);
}

Task<> XPlaneBackend::ensureSampleRefsSubscribed() {
    if (sampleRefsSubscribed_) co_return;
    co_await link_->ensureConnected();
    const auto ids = sampleIds(link_->datarefIds());
    co_await link_->send(WebApiType::subscribeValues, entries(ids));
    auto lookup = [this, &ids] { return link_->values().hasAny(ids); };
    co_await poll(lookup);
    sampleRefsSubscribed_ = true;
}

Task<SampleObservation> XPlaneBackend::getTrackSample() {
    thread_.check();
    co_await ensureSampleRefsSubscribed();
    SampleObservation seen;
    seen.sample = readTrackSample(link_->datarefIds(), link_->values());
    seen.takenAt = clock_.now();
    co_return seen;
}

void XPlaneBackend::setSituationsDirectory(std::optional<std::string> path) {
    situationsDirectory_.with([&](std::optional<std::string>& directory) { directory = std::move(path); });
}

Task<std::vector<FlightListing>> XPlaneBackend::listFlights() {
    const auto directory = situationsDirectory_.copy();
    if (!directory) throw XPlaneBackendError(Case::situationsDirectoryNotConfigured);
    auto list = [path = *directory] { return listSituations(path); };
    auto flights = co_await workers_.run(std::move(list));
    co_return flights;
}

Task<> XPlaneBackend::loadFlight(std::string path) {
    thread_.check();
    auto look = [path] { return situationExists(path); };
    const bool exists = co_await workers_.run(std::move(look));
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
    co_await setPosition(latitude, longitude, elevationBefore);
    co_await clock_.sleepFor(settleDelay);
    const double aglAfter = co_await getDataref(aboveGround);
    co_await setPosition(latitude, longitude, elevationBefore + (aglBefore - aglAfter));
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
