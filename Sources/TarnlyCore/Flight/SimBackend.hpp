#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/SimulatorStage.hpp"
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

/// One look at the aircraft.
struct SampleObservation {
    /// What the simulator does not provide is absent. `elapsedSeconds` is 0: the sampling loop has the clock.
    TrackSample sample;
    /// False: `altitudeFt` is 0 because nobody knows it.
    bool isAltitudeKnown = true;
    /// The link that the values came over, a number that no other link has had: behind it the simulator may
    /// be another one, and the aircraft elsewhere.
    std::int64_t link = 0;
    /// The moment of the look.
    Clock::TimePoint takenAt{};
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

    /// What is known of the simulator; asks nobody.
    virtual SimInfo simInfo() = 0;

    /// The current values of datarefs as numbers, in the order of `names`; they are waited for together. How
    /// names are spelled is the simulator's. Throws what the first name in the order fails with.
    virtual Task<std::vector<double>> getDatarefs(std::shared_ptr<const std::vector<std::string>> names) = 0;

    /// What `getDatarefs` would answer, where all of it is at hand; absent where something has to be waited
    /// for, or is wrong. Costs no coroutine: it is asked for each client twice a second.
    virtual std::optional<std::vector<double>> presentDatarefs(const std::vector<std::string>& names) = 0;

    /// Writes the dataref, or with `index` that element of an array dataref alone.
    virtual Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) = 0;

    /// Triggers the command once.
    virtual Task<> runCommand(std::string name) = 0;

    /// The saved flights that can be loaded.
    virtual Task<std::vector<FlightListing>> listFlights() = 0;

    /// Loads the flight with a path from `listFlights`.
    virtual Task<> loadFlight(std::string path) = 0;

    /// One look at the aircraft. Fails while there is no flight, or nobody can know.
    virtual Task<SampleObservation> getTrackSample() = 0;

    /// Whether the simulator has shown, over that link, that it was alive at about `moment`: values do not
    /// come while nothing changes, and a simulator that has stopped shows nothing either. What is not proven
    /// yet may be so a little later, while the link is the present one.
    virtual bool isProven(std::int64_t link, Clock::TimePoint moment) const = 0;

    /// Moves the aircraft to the position and keeps its height above ground.
    virtual Task<> moveToPreservingAgl(double latitude, double longitude) = 0;

    /// Puts the aircraft into that attitude and indicated airspeed; `throttle` is a ratio, 0 to 1.
    virtual Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) = 0;

    virtual SimulatorStage stage() const = 0;

    /// Has `tell` called, on the network thread, whenever the stage has changed; of several calls the last
    /// counts.
    virtual void onStageChange(std::function<void()> tell) = 0;

    /// Whether somebody cares how the simulator stands: a paired client, a recording, a person who looks. A
    /// simulator that is away is then looked for more often.
    virtual void setWatched(bool isWatched) = 0;
};

} // namespace tarnly
