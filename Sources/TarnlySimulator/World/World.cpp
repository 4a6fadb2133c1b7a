#include "TarnlySimulator/World/World.hpp"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "TarnlyPlatform/Base/SecureRandom.hpp"
#include "TarnlySimulator/World/Commands.hpp"
#include "TarnlySimulator/World/Datarefs.hpp"
#include "TarnlySimulator/World/PilotedFlight.hpp"
#include "TarnlySimulator/World/Value.hpp"
#include "TarnlySimulator/World/WorldError.hpp"

namespace tarnly::simulator {
namespace {

std::uint64_t randomSeed() {
    std::uint64_t seed = 0;
    fillSecureRandom(std::as_writable_bytes(std::span(&seed, 1)));
    return seed;
}

double changed(double number, const CommandEffect& effect) {
    switch (effect.kind) {
        case CommandEffect::Kind::toggle:
            return number > 0.5 ? 0 : 1;
        case CommandEffect::Kind::set:
            return effect.operand;
        case CommandEffect::Kind::add:
            return std::clamp(number + effect.operand, 0.0, 1.0);
        case CommandEffect::Kind::restartFlight:
            break;
    }
    return number;
}

Value changed(Value value, const CommandEffect& effect) {
    if (auto* numbers = std::get_if<std::vector<double>>(&value)) {
        for (double& number : *numbers)
            number = changed(number, effect);
        return value;
    }
    return changed(std::get<double>(value), effect);
}

} // namespace

World::World(const WorldOptions& options)
    : World(options, std::make_unique<PilotedFlight>(options.seed, options.start, options)) {}

World::World(const WorldOptions& options, std::unique_ptr<FlightSource> flight)
    : quirks(options.quirks),
      version_(options.version),
      speed_(options.speed),
      flight_(std::move(flight)),
      datarefs_(flight_->datarefs()),
      commands_(stockCommands(options.commands)),
      paused_(datarefs_.named("sim/time/paused")) {
    if (options.lateDatarefsAfter) changeAircraft(*options.lateDatarefsAfter);
    drawIds(options.idSeed ? *options.idSeed : randomSeed());
}

void World::drawIds(std::uint64_t seed) {
    datarefs_.drawIds(seed);
    commands_.drawIds(mix(seed));
    ++idGeneration_;
}

void World::swapGearCommands() {
    commands_.swapIds("sim/flight_controls/landing_gear_up", "sim/flight_controls/landing_gear_down");
    ++idGeneration_;
}

void World::changeAircraft(std::chrono::milliseconds addOnsAfter) {
    quirks.lateDatarefs = true;
    addOnsMissingS_ = std::chrono::duration<double>(addOnsAfter).count();
}

void World::advance(double seconds) {
    awaitAddOns(seconds);
    if (quirks.mainMenu || std::get<double>(paused_->kept) > 0.5) return;
    flight_->step(seconds * speed_);
}

void World::awaitAddOns(double seconds) {
    if (!addOnsMissingS_) return;
    *addOnsMissingS_ -= seconds;
    if (*addOnsMissingS_ > 1e-9) return;
    addOnsMissingS_.reset();
    quirks.lateDatarefs = false;
}

bool World::shows(const Dataref& dataref) const {
    if (quirks.mainMenu || (dataref.isAwkward && !quirks.awkwardCatalogue)) return false;
    return !(dataref.isAddOn && quirks.lateDatarefs);
}

const Dataref* World::shownDataref(std::int64_t id) const {
    const Dataref* dataref = datarefs_.withId(id);
    return dataref != nullptr && shows(*dataref) ? dataref : nullptr;
}

Value World::read(const Dataref& dataref) const {
    if (&dataref == paused_ && flight_->isPaused()) return 1.0;
    if (!dataref.flightValue) return dataref.kept;
    if (quirks.nonFinite) {
        if (dataref.name == "sim/flightmodel/position/y_agl") return std::numeric_limits<double>::infinity();
        if (dataref.name == "sim/flightmodel/misc/h_ind") return std::numeric_limits<double>::quiet_NaN();
    }
    return flight_->read(*dataref.flightValue);
}

void World::write(std::int64_t datarefId, const boost::json::value& value,
                  std::optional<std::int64_t> index) {
    Dataref* dataref = datarefs_.withId(datarefId);
    if (dataref == nullptr || !shows(*dataref))
        throw WorldError(WorldError::Case::invalidDatarefId,
                         "No dataref has the id " + std::to_string(datarefId) + ".");
    if (!dataref->isWritable)
        throw WorldError(WorldError::Case::datarefIsReadOnly,
                         "The dataref " + dataref->name + " is read-only.");
    assign(*dataref, written(read(*dataref), dataref->type, value, index));
}

void World::assign(Dataref& dataref, const Value& value) {
    if (dataref.flightValue) {
        flight_->write(*dataref.flightValue, value);
    } else {
        dataref.kept = value;
    }
}

void World::activate(std::int64_t commandId) {
    const Command* command = commands_.withId(commandId);
    if (command == nullptr)
        throw WorldError(WorldError::Case::invalidCommandId,
                         "No command has the id " + std::to_string(commandId) + ".");
    if (command->effect != nullptr) apply(*command->effect);
}

void World::apply(const CommandEffect& effect) {
    if (effect.kind == CommandEffect::Kind::restartFlight) {
        flight_->beginAnew();
        return;
    }
    Dataref* dataref = datarefs_.named(effect.dataref);
    if (dataref != nullptr) assign(*dataref, changed(read(*dataref), effect));
}

void World::beginAnew() {
    quirks.mainMenu = false;
    flight_->beginAnew();
}

bool World::loadSituation(std::string_view path) {
    quirks.mainMenu = false;
    return flight_->loadSituation(path.substr(path.rfind('/') + 1));
}

} // namespace tarnly::simulator
