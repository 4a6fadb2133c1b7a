#include "TarnlyClient/Commands/FlightChoice.hpp"

#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {

bool isFlightPath(const std::string& nameOrPath) { return nameOrPath.find('/') != std::string::npos; }

std::string pathOfFlight(const std::vector<FlightListing>& flights, const std::string& name) {
    std::vector<std::string> paths;
    for (const auto& flight : flights) {
        if (flight.name == name) paths.push_back(flight.path);
    }
    const auto shown = "\"" + printable(name) + "\"";
    if (paths.empty())
        throw ClientError("no flight is named " + shown + "; flights lists those that are there");
    if (paths.size() == 1) return paths.front();
    auto complaint = "several flights are named " + shown + "; say which by its path:";
    for (const auto& path : paths)
        complaint += "\n  " + printable(path);
    throw ClientError(complaint);
}

} // namespace tarnly::client
