#pragma once

namespace tarnly {

/// Metres per second in the simulator's local frame: x is east, y up, z south.
struct LocalVelocity {
    double x = 0;
    double y = 0;
    double z = 0;
};

/// Indicated over true airspeed: the square root of the air density at `elevation` (metres
/// above mean sea level) relative to sea level, by the International Standard Atmosphere below 11 km. Heights
/// above 15 km count as 15 km, those below sea level as sea level.
double rootOfDensityRatio(double elevation);

/// The velocity of an aircraft that flies at `iasKts` in the direction of its nose, with pitch and true
/// heading in degrees.
LocalVelocity localVelocity(double iasKts, double elevation, double pitchDeg, double headingDeg);

} // namespace tarnly
