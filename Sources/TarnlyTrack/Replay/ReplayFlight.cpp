#include "TarnlyTrack/Replay/ReplayFlight.hpp"
#include "TarnlyTrack/Log/GreatCircle.hpp"

#include <iterator>
#include <utility>

namespace tarnly::track {
namespace {

using Served = ReplayFlight::Served;
using simulator::Value;
using enum simulator::ValueType;

constexpr double metersPerFoot = 0.3048;
constexpr double secondsPerHour = 3600;

template <auto what>
bool has(const RecordedFlight& flight) {
    return flight.has(what);
}

template <Quantity quantity>
Value number(const RecordedFlight& flight) {
    return flight.number(quantity);
}

template <Switch which>
Value state(const RecordedFlight& flight) {
    const auto isOn = flight.isOn(which);
    return !isOn ? unknown : *isOn ? 1.0 : 0.0;
}

Value metersAboveGround(const RecordedFlight& flight) {
    return flight.number(Quantity::aglFt) * metersPerFoot;
}

/// The recording has the mean of the wheels.
Value wheels(const RecordedFlight& flight) {
    constexpr std::size_t count = 3;
    return std::vector<double>(count, flight.number(Quantity::gearRatio));
}

template <Lever lever>
bool hasOneEngine(const RecordedFlight& flight) {
    return flight.engines(lever) == 1;
}

template <Lever lever>
bool hasEngines(const RecordedFlight& flight) {
    return flight.engines(lever) > 1;
}

template <Lever lever>
Value oneEngine(const RecordedFlight& flight) {
    const auto numbers = flight.numbers(lever);
    return numbers.empty() ? unknown : numbers.front();
}

template <Lever lever>
Value engines(const RecordedFlight& flight) {
    auto numbers = flight.numbers(lever);
    if (numbers.empty()) numbers.assign(flight.engines(lever), unknown);
    return numbers;
}

bool hasPositions(const RecordedFlight& flight) {
    return flight.has(Quantity::lat) && flight.has(Quantity::lon);
}

constexpr auto throttle = "sim/cockpit2/engine/actuators/throttle_ratio_all";
constexpr auto mixture = "sim/cockpit2/engine/actuators/mixture_ratio_all";
constexpr auto propeller = "sim/cockpit2/engine/actuators/prop_ratio_all";

constexpr Served table[] = {
    {"sim/flightmodel/position/latitude", real, has<Quantity::lat>, number<Quantity::lat>},
    {"sim/flightmodel/position/longitude", real, has<Quantity::lon>, number<Quantity::lon>},
    {"sim/flightmodel/misc/h_ind", single, has<Quantity::altitudeFt>, number<Quantity::altitudeFt>},
    {"sim/flightmodel/position/y_agl", single, has<Quantity::aglFt>, metersAboveGround},
    {"sim/flightmodel/position/phi", single, has<Quantity::bankDeg>, number<Quantity::bankDeg>},
    {"sim/flightmodel/position/theta", single, has<Quantity::pitchDeg>, number<Quantity::pitchDeg>},
    {"sim/cockpit2/controls/gear_handle_down", integer, has<Switch::gearDown>, state<Switch::gearDown>},
    {"sim/flightmodel2/gear/deploy_ratio", singles, has<Quantity::gearRatio>, wheels},
    {"sim/cockpit2/controls/flap_ratio", single, has<Quantity::flapRatio>, number<Quantity::flapRatio>},
    {"sim/cockpit2/controls/flap_handle_request_ratio", single, has<Quantity::flapRatio>,
     number<Quantity::flapRatio>},
    {"sim/cockpit2/autopilot/servos_on", integer, has<Switch::autopilotOn>, state<Switch::autopilotOn>},
    // As the simulators have them: one number, or a list with one for each engine.
    {throttle, single, hasOneEngine<Lever::throttle>, oneEngine<Lever::throttle>},
    {throttle, singles, hasEngines<Lever::throttle>, engines<Lever::throttle>},
    {mixture, single, hasOneEngine<Lever::mixture>, oneEngine<Lever::mixture>},
    {mixture, singles, hasEngines<Lever::mixture>, engines<Lever::mixture>},
    {propeller, single, hasOneEngine<Lever::prop>, oneEngine<Lever::prop>},
    {propeller, singles, hasEngines<Lever::prop>, engines<Lever::prop>},
    {"sim/flightmodel/position/groundspeed", single, hasPositions,
     [](const RecordedFlight& flight) -> Value {
         return flight.groundSpeedKt() * metersPerNauticalMile / secondsPerHour;
     }},
    {"sim/flightmodel/position/hpath", single, hasPositions,
     [](const RecordedFlight& flight) -> Value { return flight.trackDeg(); }},
    {"sim/flightmodel/position/vh_ind_fpm", single, has<Quantity::altitudeFt>,
     [](const RecordedFlight& flight) -> Value { return flight.verticalSpeedFtMin(); }},
    {"sim/time/total_flight_time_sec", single, [](const RecordedFlight&) { return true; },
     [](const RecordedFlight& flight) -> Value { return flight.moment(); }},
};

} // namespace

ReplayFlight::ReplayFlight(RecordedFlight flight, ReplayOptions options)
    : flight_(std::move(flight)), options_(std::move(options)) {
    for (const auto& served : table) {
        if (served.isTold(flight_)) served_.push_back(&served);
    }
    beginAnew();
}

std::vector<simulator::Dataref> ReplayFlight::datarefs() const {
    std::vector<simulator::Dataref> result;
    for (std::size_t place = 0; place < served_.size(); ++place) {
        result.emplace_back();
        result.back().name = served_[place]->name;
        result.back().type = served_[place]->type;
        result.back().flightValue = place;
    }
    result.emplace_back();
    result.back().name = "sim/time/paused";
    result.back().type = integer;
    result.back().kept = options_.isPaused ? 1.0 : 0.0;
    return result;
}

Value ReplayFlight::read(std::size_t flightValue) const { return served_[flightValue]->read(flight_); }

void ReplayFlight::write(std::size_t, const Value&) {}

void ReplayFlight::step(double seconds) {
    if (hasEnded_) {
        if (options_.isRepeated) beginAnew();
        return;
    }
    flight_.goTo(flight_.moment() + seconds);
    if (flight_.moment() < flight_.end()) return;
    hasEnded_ = true;
    if (options_.onEnd && !options_.isRepeated) options_.onEnd();
}

bool ReplayFlight::isPaused() const { return hasEnded_ ? !options_.isRepeated : flight_.isPaused(); }

void ReplayFlight::beginAnew() {
    hasEnded_ = false;
    flight_.goTo(options_.from);
}

bool ReplayFlight::loadSituation(std::string_view) { return false; }

std::string_view ReplayFlight::phase() const { return hasEnded_ ? "ended" : "replay"; }

} // namespace tarnly::track
