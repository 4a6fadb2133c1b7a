#pragma once

#include <boost/json/value.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlySimulator/Flight/FlightState.hpp"
#include "TarnlySimulator/World/Catalogue.hpp"
#include "TarnlySimulator/World/Commands.hpp"
#include "TarnlySimulator/World/Datarefs.hpp"
#include "TarnlySimulator/World/FlightSource.hpp"
#include "TarnlySimulator/World/Quirks.hpp"

namespace tarnly::simulator {

/// How a world begins.
struct WorldOptions : DatarefOptions {
    /// What the simulator says that its version is.
    std::string version = "12.4.0";
    /// Shifts the route of the flight.
    std::uint64_t seed = 1;
    /// Ids are drawn from it; absent: other ids in every run, as in the real thing.
    std::optional<std::uint64_t> idSeed;
    FlightPhase start = FlightPhase::runway;
    /// Simulated seconds in one second.
    double speed = 1;

    /// The command list is filled up to this size; it is never smaller than the built-in one.
    std::size_t commands = 0;

    Quirks quirks;
    /// When the add-ons register their datarefs; absent: from the beginning, unless the quirk says otherwise.
    std::optional<std::chrono::milliseconds> lateDatarefsAfter;
};

/// The simulator without any wire: a flight, the datarefs and commands that show and move it, and the quirks.
///
/// Not synchronised: whoever owns it calls it from one thread.
class World {
  public:
    /// With the stand-in's own aircraft.
    explicit World(const WorldOptions& options);

    /// With another flight, to which the options of the aircraft and of its catalogue mean nothing.
    World(const WorldOptions& options, std::unique_ptr<FlightSource> flight);

    /// May be changed at any time.
    Quirks quirks;

    /// Lets `seconds` of real time pass; the flight stands still at the main menu and while paused.
    void advance(double seconds);

    const FlightSource& flight() const { return *flight_; }

    /// All datarefs, also those that do not show now.
    const Catalogue<Dataref>& datarefs() const { return datarefs_; }
    const Catalogue<Command>& commands() const { return commands_; }

    /// Whether clients can see `dataref` now: at the main menu none, and those of add-ons once they are
    /// there.
    bool shows(const Dataref& dataref) const;

    /// Null for one that does not exist or does not show.
    const Dataref* shownDataref(std::int64_t id) const;

    Value read(const Dataref& dataref) const;

    /// Writes as a client. Throws `WorldError` for an id that nothing shown has, a read-only dataref and an
    /// unfit value.
    void write(std::int64_t datarefId, const boost::json::value& value, std::optional<std::int64_t> index);

    /// Throws `WorldError` for an id that no command has.
    void activate(std::int64_t commandId);

    /// Leaves the main menu and jumps to where the situation of that file begins. False: the flight cannot.
    bool loadSituation(std::string_view path);

    /// Leaves the main menu and begins the flight as it began at first.
    void beginAnew();

    /// Takes away the datarefs of add-ons, which register them again after so long, under the same ids.
    void changeAircraft(std::chrono::milliseconds addOnsAfter);

    const std::string& version() const { return version_; }

    /// Gives everything a new id, as a restart does.
    void drawIds(std::uint64_t seed);
    /// Lets "landing gear up" and "landing gear down" have each other's id, while all else keeps its own.
    void swapGearCommands();
    /// Counts the calls of both.
    std::uint64_t idGeneration() const { return idGeneration_; }

  private:
    void apply(const CommandEffect& effect);
    void assign(Dataref& dataref, const Value& value);
    void awaitAddOns(double seconds);

    std::string version_;
    double speed_;
    std::unique_ptr<FlightSource> flight_;
    Catalogue<Dataref> datarefs_;
    Catalogue<Command> commands_;
    const Dataref* paused_;
    std::optional<double> addOnsMissingS_;
    std::uint64_t idGeneration_ = 0;
};

} // namespace tarnly::simulator
