#include "TarnlySimulator/World/Datarefs.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>

#include "TarnlySimulator/Flight/Globe.hpp"

namespace tarnly::simulator {
namespace {

constexpr double feetPerMetre = 1 / 0.3048;
constexpr double knotsPerMs = 3600.0 / 1852;
constexpr double magneticVariationDeg = 3;

double number(const Value& value) { return std::get<double>(value); }
double ratio(double value) { return std::clamp(value, 0.0, 1.0); }

template <std::size_t Count>
Value array(const std::array<double, Count>& values) {
    return std::vector<double>(values.begin(), values.end());
}

/// What is written for engines that there are not is forgotten.
template <std::size_t Count>
void assignRatios(std::array<double, Count>& out, const Value& value) {
    const auto& numbers = std::get<std::vector<double>>(value);
    std::ranges::transform(std::span(numbers).first(std::min(Count, numbers.size())), out.begin(), ratio);
}

using Flight = FlightModel;
using enum ValueType;

template <double FlightState::*member>
Value get(const Flight& flight) {
    return flight.state().*member;
}

template <double FlightState::*member>
void set(Flight& flight, const Value& value) {
    flight.takeOver().*member = number(value);
}

template <double FlightState::*member>
void setLever(Flight& flight, const Value& value) {
    flight.controls().*member = ratio(number(value));
}

void setLatitude(Flight& flight, const Value& value) {
    flight.takeOver().latitudeDeg = std::clamp(number(value), -89.9, 89.9);
}

void setLongitude(Flight& flight, const Value& value) {
    flight.takeOver().longitudeDeg = wrapped180(number(value));
}

void setHeading(Flight& flight, const Value& value) {
    flight.takeOver().headingDeg = wrapped360(number(value));
}

Value pathAngle(const Flight& flight) {
    const auto& state = flight.state();
    return degrees(std::atan2(state.upMs, groundSpeedMs(state)));
}

Value trackAngle(const Flight& flight) {
    const auto& state = flight.state();
    return groundSpeedMs(state) < 0.1 ? state.headingDeg
                                      : wrapped360(degrees(std::atan2(state.eastMs, -state.southMs)));
}

Value magneticHeading(const Flight& flight) {
    return wrapped360(flight.state().headingDeg - magneticVariationDeg);
}

Value loadFactor(const Flight& flight) {
    return 1 / std::cos(radians(std::clamp(flight.state().bankDeg, -75.0, 75.0)));
}

using Levers = std::array<double, 2>;

/// One number for the levers of all engines.
template <Levers FlightState::*member>
Value getTogether(const Flight& flight) {
    const Levers& levers = flight.state().*member;
    return std::midpoint(levers[0], levers[1]);
}

template <Levers FlightState::*member>
Value getList(const Flight& flight) {
    return array(flight.state().*member);
}

/// As many elements as the simulator has room for engines, whether there are any or not.
template <Levers FlightState::*member>
Value getEach(const Flight& flight) {
    constexpr std::size_t roomForEngines = 16;
    const Levers& levers = flight.state().*member;
    std::vector<double> out(levers.begin(), levers.end());
    out.resize(roomForEngines);
    return out;
}

template <Levers FlightState::*member>
void setTogether(Flight& flight, const Value& value) {
    (flight.controls().*member).fill(ratio(number(value)));
}

template <Levers FlightState::*member>
void setEach(Flight& flight, const Value& value) {
    assignRatios(flight.controls().*member, value);
}

void setThrottleTogether(Flight& flight, const Value& value) {
    flight.takeThrottle().throttle.fill(ratio(number(value)));
}

void setThrottleEach(Flight& flight, const Value& value) {
    assignRatios(flight.takeThrottle().throttle, value);
}

/// Scaled from the levers, each engine with its own.
Value perEngine(const std::array<double, 2>& levers, double idle, double full) {
    return std::vector<double>{idle + (full - idle) * levers[0], idle + (full - idle) * levers[1]};
}

constexpr FlightBinding position[] = {
    {"sim/flightmodel/position/latitude", real, get<&FlightState::latitudeDeg>, setLatitude},
    {"sim/flightmodel/position/longitude", real, get<&FlightState::longitudeDeg>, setLongitude},
    {"sim/flightmodel/position/elevation", real, get<&FlightState::elevationM>,
     set<&FlightState::elevationM>},
    {"sim/flightmodel/misc/h_ind", single,
     [](const Flight& flight) -> Value { return flight.state().elevationM * feetPerMetre; }, nullptr},
    {"sim/flightmodel/position/y_agl", single,
     [](const Flight& flight) -> Value { return heightAboveGroundM(flight.state()); }, nullptr},
    {"sim/flightmodel/position/theta", single, get<&FlightState::pitchDeg>, set<&FlightState::pitchDeg>},
    {"sim/flightmodel/position/phi", single, get<&FlightState::bankDeg>, set<&FlightState::bankDeg>},
    {"sim/flightmodel/position/psi", single, get<&FlightState::headingDeg>, setHeading},
    {"sim/flightmodel/position/local_vx", single, get<&FlightState::eastMs>, set<&FlightState::eastMs>},
    {"sim/flightmodel/position/local_vy", single, get<&FlightState::upMs>, set<&FlightState::upMs>},
    {"sim/flightmodel/position/local_vz", single, get<&FlightState::southMs>, set<&FlightState::southMs>},
    {"sim/flightmodel/position/P", single, get<&FlightState::rollRate>, set<&FlightState::rollRate>},
    {"sim/flightmodel/position/Q", single, get<&FlightState::pitchRate>, set<&FlightState::pitchRate>},
    {"sim/flightmodel/position/R", single, get<&FlightState::yawRate>, set<&FlightState::yawRate>},
    {"sim/flightmodel/position/mag_psi", single, magneticHeading, nullptr},
    {"sim/flightmodel/position/magpsi", single, magneticHeading, nullptr},
    {"sim/flightmodel/position/magnetic_variation", single,
     [](const Flight&) -> Value { return magneticVariationDeg; }, nullptr},
    {"sim/flightmodel/position/hpath", single, trackAngle, nullptr},
    {"sim/flightmodel/position/vpath", single, pathAngle, nullptr},
    {"sim/flightmodel/position/alpha", single,
     [](const Flight& flight) -> Value { return flight.state().pitchDeg - number(pathAngle(flight)); },
     nullptr},
    {"sim/flightmodel/position/groundspeed", single,
     [](const Flight& flight) -> Value { return groundSpeedMs(flight.state()); }, nullptr},
    {"sim/flightmodel/position/true_airspeed", single,
     [](const Flight& flight) -> Value { return trueAirspeedMs(flight.state()); }, nullptr},
    {"sim/flightmodel/position/indicated_airspeed", single,
     [](const Flight& flight) -> Value { return indicatedAirspeedMs(flight.state()) * knotsPerMs; }, nullptr},
    {"sim/flightmodel/position/vh_ind", single, get<&FlightState::upMs>, nullptr},
    {"sim/flightmodel/position/vh_ind_fpm", single,
     [](const Flight& flight) -> Value { return flight.state().upMs * 60 * feetPerMetre; }, nullptr},
    {"sim/flightmodel/failures/onground_any", integer,
     [](const Flight& flight) -> Value { return flight.isOnGround() ? 1.0 : 0.0; }, nullptr},
    {"sim/flightmodel/forces/g_nrml", single, loadFactor, nullptr},
};

constexpr FlightBinding controls[] = {
    {"sim/cockpit2/controls/gear_handle_down", integer,
     [](const Flight& flight) -> Value { return flight.state().gearHandleDown ? 1.0 : 0.0; },
     [](Flight& flight, const Value& value) { flight.controls().gearHandleDown = number(value) > 0.5; }},
    {"sim/flightmodel2/gear/deploy_ratio", singles,
     [](const Flight& flight) { return array(flight.state().gearDeployed); }, nullptr},
    {"sim/cockpit2/engine/actuators/throttle_ratio", singles, getEach<&FlightState::throttle>,
     setThrottleEach},
    {"sim/cockpit2/engine/actuators/mixture_ratio", singles, getEach<&FlightState::mixture>,
     setEach<&FlightState::mixture>},
    {"sim/cockpit2/engine/actuators/prop_ratio", singles, getEach<&FlightState::propeller>,
     setEach<&FlightState::propeller>},
    {"sim/cockpit2/controls/flap_handle_request_ratio", single, get<&FlightState::flapHandle>,
     setLever<&FlightState::flapHandle>},
    {"sim/cockpit2/controls/flap_ratio", single, get<&FlightState::flapHandle>,
     setLever<&FlightState::flapHandle>},
    {"sim/flightmodel2/controls/flap_handle_deploy_ratio", single, get<&FlightState::flapsDeployed>, nullptr},
    {"sim/cockpit2/autopilot/servos_on", integer,
     [](const Flight& flight) -> Value { return flight.state().autopilotServosOn ? 1.0 : 0.0; },
     [](Flight& flight, const Value& value) { flight.controls().autopilotServosOn = number(value) > 0.5; }},
    {"sim/cockpit2/engine/indicators/engine_speed_rpm", singles,
     [](const Flight& flight) { return perEngine(flight.state().throttle, 800, 2700); }, nullptr},
    {"sim/cockpit2/engine/indicators/MPR_in_hg", singles,
     [](const Flight& flight) { return perEngine(flight.state().throttle, 12, 29); }, nullptr},
    {"sim/cockpit2/engine/indicators/EGT_deg_C", singles,
     [](const Flight& flight) { return perEngine(flight.state().throttle, 450, 780); }, nullptr},
    {"sim/flightmodel/weight/m_fuel", singles,
     [](const Flight& flight) { return array(flight.state().fuelKg); }, nullptr},
    {"sim/flightmodel/weight/m_fuel_total", single,
     [](const Flight& flight) -> Value { return flight.state().fuelKg[0] + flight.state().fuelKg[1]; },
     nullptr},
};

constexpr FlightBinding leverNumbers[] = {
    {"sim/cockpit2/engine/actuators/throttle_ratio_all", single, getTogether<&FlightState::throttle>,
     setThrottleTogether},
    {"sim/cockpit2/engine/actuators/mixture_ratio_all", single, getTogether<&FlightState::mixture>,
     setTogether<&FlightState::mixture>},
    {"sim/cockpit2/engine/actuators/prop_ratio_all", single, getTogether<&FlightState::propeller>,
     setTogether<&FlightState::propeller>},
};

constexpr FlightBinding leverLists[] = {
    {"sim/cockpit2/engine/actuators/throttle_ratio_all", singles, getList<&FlightState::throttle>,
     setThrottleEach},
    {"sim/cockpit2/engine/actuators/mixture_ratio_all", singles, getList<&FlightState::mixture>,
     setEach<&FlightState::mixture>},
    {"sim/cockpit2/engine/actuators/prop_ratio_all", singles, getList<&FlightState::propeller>,
     setEach<&FlightState::propeller>},
};

constexpr FlightBinding clocks[] = {
    {"sim/time/zulu_time_sec", single, get<&FlightState::zuluTimeS>,
     [](Flight& flight, const Value& value) {
         flight.controls().zuluTimeS = std::clamp(number(value), 0.0, 86399.0);
     }},
    {"sim/time/local_time_sec", single,
     [](const Flight& flight) -> Value { return std::fmod(flight.state().zuluTimeS + 3600, 86400); },
     nullptr},
    {"sim/time/total_running_time_sec", single, get<&FlightState::elapsedS>, nullptr},
    {"sim/time/total_flight_time_sec", single, get<&FlightState::elapsedS>, nullptr},
};

constexpr auto all = [] {
    std::array<FlightBinding, std::size(position) + std::size(controls) + std::size(clocks)> out{};
    auto next = std::ranges::copy(position, out.begin()).out;
    next = std::ranges::copy(controls, next).out;
    std::ranges::copy(clocks, next);
    return out;
}();

} // namespace

std::span<const FlightBinding> flightDatarefs() { return all; }

std::span<const FlightBinding> leverDatarefs(bool asLists) {
    return asLists ? std::span<const FlightBinding>(leverLists) : leverNumbers;
}

} // namespace tarnly::simulator
