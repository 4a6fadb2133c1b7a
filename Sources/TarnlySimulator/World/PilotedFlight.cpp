#include "TarnlySimulator/World/PilotedFlight.hpp"

namespace tarnly::simulator {

/// In the order in which `stockDatarefs` counts them.
const FlightBinding& PilotedFlight::binding(std::size_t flightValue) const {
    const auto own = flightDatarefs();
    return flightValue < own.size() ? own[flightValue]
                                    : leverDatarefs(options_.leverLists)[flightValue - own.size()];
}

Value PilotedFlight::read(std::size_t flightValue) const { return binding(flightValue).read(model_); }

void PilotedFlight::write(std::size_t flightValue, const Value& value) {
    binding(flightValue).write(model_, value);
}

bool PilotedFlight::loadSituation(std::string_view fileName) {
    model_.begin(flightPhaseOfSituation(fileName));
    return true;
}

} // namespace tarnly::simulator
