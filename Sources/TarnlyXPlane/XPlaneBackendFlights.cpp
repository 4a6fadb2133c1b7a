#include <utility>

#include "TarnlyXPlane/SimoPacket.hpp"
#include "TarnlyXPlane/SituationFiles.hpp"
#include "TarnlyXPlane/XPlaneBackend.hpp"

namespace tarnly {
namespace {

using Case = XPlaneBackendError::Case;

constexpr std::uint16_t commandPort = 49000;

} // namespace

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
    auto look = [path] { return situationExists(path); };
    const bool exists = co_await workers_.run(std::move(look));
    if (!exists) throw XPlaneBackendError(Case::flightNotFound, path);
    Endpoint destination;
    destination.host = host_;
    destination.port = commandPort;
    auto packet = buildSimoLoadSituationPacket(relativeSituationPath(path));
    co_await transport_->sendDatagram(std::move(destination), std::move(packet));
}

} // namespace tarnly
