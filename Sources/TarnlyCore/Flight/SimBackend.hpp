#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

namespace tarnly {

/// What the simulator is. `version` is "unknown" where it does not tell.
struct SimInfo {
    std::string sim;
    std::string version;

    bool operator==(const SimInfo&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("sim", &SimInfo::sim), field("version", &SimInfo::version));
    }
};

/// A saved flight. `path` is opaque to the client, which hands it back to load the flight.
struct FlightListing {
    std::string name;
    std::string path;
    Date modifiedAt;

    bool operator==(const FlightListing&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("name", &FlightListing::name), field("path", &FlightListing::path),
                          field("modified_at", &FlightListing::modifiedAt));
    }
};

/// The one seam between the protocol core and a flight simulator; a second simulator is added by implementing
/// it.
///
/// One object is shared by all sessions and the sampling loop, whose calls overlap. Every operation may
/// throw; the error's `what()` is what the client is told. Angles are in degrees, altitudes in feet, speeds
/// in knots.
class SimBackend {
  public:
    virtual ~SimBackend() = default;

    virtual Task<SimInfo> simInfo() = 0;

    /// The current value of one dataref as a number. How names are spelled is the simulator's.
    virtual Task<double> getDataref(std::string name) = 0;

    /// Writes the dataref, or with `index` that element of an array dataref alone.
    virtual Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) = 0;

    /// Triggers the command once.
    virtual Task<> runCommand(std::string name) = 0;

    /// The saved flights that can be loaded.
    virtual Task<std::vector<FlightListing>> listFlights() = 0;

    /// Loads the flight with a path from `listFlights`.
    virtual Task<> loadFlight(std::string path) = 0;

    /// One snapshot of the aircraft; what the simulator does not provide is absent. `elapsedSeconds` is 0:
    /// the sampling loop has the clock.
    virtual Task<TrackSample> getTrackSample() = 0;

    /// Moves the aircraft to the position and keeps its height above ground.
    virtual Task<> moveToPreservingAgl(double latitude, double longitude) = 0;

    /// Puts the aircraft into that attitude and indicated airspeed; `throttle` is a ratio, 0 to 1.
    virtual Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) = 0;
};

} // namespace tarnly
