#pragma once

#include <string>
#include <vector>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

/// Whether `nameOrPath` is a path rather than the name of a flight.
bool isFlightPath(const std::string& nameOrPath);

/// The path of the only flight of exactly this name. Throws `ClientError` when there is none, or several.
std::string pathOfFlight(const std::vector<FlightListing>& flights, const std::string& name);

} // namespace tarnly::client
