#include "TarnlyXPlane/XPlaneBackend.hpp"

#include <utility>

#include "TarnlyXPlane/Datarefs.hpp"
#include "TarnlyXPlane/IndexedName.hpp"
#include "TarnlyXPlane/TrackSampleReading.hpp"

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

constexpr int polls = 50;
constexpr std::chrono::milliseconds pollInterval(20);

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

XPlaneBackend::XPlaneBackend(Endpoint endpoint, std::shared_ptr<XPlaneTransport> transport, Clock& clock,
                             WorkerPool& workers)
    : host_(endpoint.host),
      link_(std::make_shared<WebApiLink>(std::move(endpoint), transport, workers)),
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
    co_await link_->send(MessageType::datarefSubscribeValues, std::move(wanted));
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
    co_await link_->ensureConnected();
    std::vector<DatarefEntry> written(1);
    written.front().id = idOf(name, link_->datarefIds(), Case::unknownDataref);
    written.front().value = value;
    written.front().index = index;
    co_await link_->send(MessageType::datarefSetValues, std::move(written));
}

Task<> XPlaneBackend::runCommand(std::string name) {
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
    co_await link_->send(MessageType::datarefSubscribeValues, entries(ids));
    auto lookup = [this, &ids] { return link_->values().hasAny(ids); };
    co_await poll(lookup);
    sampleRefsSubscribed_ = true;
}

Task<TrackSample> XPlaneBackend::getTrackSample() {
    co_await ensureSampleRefsSubscribed();
    co_return readTrackSample(link_->datarefIds(), link_->values());
}

} // namespace tarnly
