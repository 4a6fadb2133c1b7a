#pragma once

namespace tarnly::simulator {

/// True airspeed divided by indicated airspeed at a height above mean sea level: one over the root of the air
/// density relative to sea level, by the International Standard Atmosphere's law for the troposphere.
double trueAirspeedFactor(double elevationM);

} // namespace tarnly::simulator
