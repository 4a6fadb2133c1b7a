#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The simulator's names of datarefs: those that this module reads and writes itself, and how one is spelt.
namespace tarnly::datarefs {

inline constexpr std::string_view latitude = "sim/flightmodel/position/latitude";
inline constexpr std::string_view longitude = "sim/flightmodel/position/longitude";
/// Metres above mean sea level.
inline constexpr std::string_view elevation = "sim/flightmodel/position/elevation";
/// Feet.
inline constexpr std::string_view indicatedAltitude = "sim/flightmodel/misc/h_ind";
/// Metres above ground.
inline constexpr std::string_view aboveGround = "sim/flightmodel/position/y_agl";

/// Pitch, bank and true heading, degrees.
inline constexpr std::string_view theta = "sim/flightmodel/position/theta";
inline constexpr std::string_view phi = "sim/flightmodel/position/phi";
inline constexpr std::string_view psi = "sim/flightmodel/position/psi";

/// Velocity in metres per second: x is east, y up, z south.
inline constexpr std::string_view localVx = "sim/flightmodel/position/local_vx";
inline constexpr std::string_view localVy = "sim/flightmodel/position/local_vy";
inline constexpr std::string_view localVz = "sim/flightmodel/position/local_vz";

/// Body rotation rates.
inline constexpr std::string_view rollRate = "sim/flightmodel/position/P";
inline constexpr std::string_view pitchRate = "sim/flightmodel/position/Q";
inline constexpr std::string_view yawRate = "sim/flightmodel/position/R";

inline constexpr std::string_view gearHandleDown = "sim/cockpit2/controls/gear_handle_down";
/// An array with one element a wheel.
inline constexpr std::string_view gearDeployRatio = "sim/flightmodel2/gear/deploy_ratio";
/// The flap handle; newer simulators have the second in its place.
inline constexpr std::string_view flapRatio = "sim/cockpit2/controls/flap_ratio";
inline constexpr std::string_view flapRequestRatio = "sim/cockpit2/controls/flap_handle_request_ratio";
inline constexpr std::string_view autopilotServosOn = "sim/cockpit2/autopilot/servos_on";

/// One number for all engines; some simulators serve arrays with one element an engine.
inline constexpr std::string_view throttleRatio = "sim/cockpit2/engine/actuators/throttle_ratio_all";
inline constexpr std::string_view mixtureRatio = "sim/cockpit2/engine/actuators/mixture_ratio_all";
inline constexpr std::string_view propRatio = "sim/cockpit2/engine/actuators/prop_ratio_all";

/// What a track sample is made of, in the order in which it is subscribed.
inline constexpr std::array samples{
    latitude,     longitude, indicatedAltitude, aboveGround, gearHandleDown, gearDeployRatio,  throttleRatio,
    mixtureRatio, propRatio, flapRatio,         phi,         theta,          autopilotServosOn};

/// Where the aircraft is.
inline constexpr std::array positions{latitude, longitude};

} // namespace tarnly::datarefs

namespace tarnly {

/// One element of an array dataref: "sim/a[3]" is element 3 of "sim/a".
struct IndexedName {
    std::string base;
    /// As written, so it may be negative.
    std::int64_t index = 0;

    bool operator==(const IndexedName&) const = default;
};

/// Splits a name at its first "[". Absent unless the name ends with "]" and what stands between is an
/// integer: such a name is one whole.
std::optional<IndexedName> parseIndexedName(std::string_view name);

} // namespace tarnly
