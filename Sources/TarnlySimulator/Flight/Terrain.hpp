#pragma once

namespace tarnly::simulator {

/// Height of the ground above mean sea level, metres, for a position in degrees: gentle invented hills all
/// round the globe, between 50 and 710 metres, smooth also across the date line.
double terrainHeightM(double latitudeDeg, double longitudeDeg);

} // namespace tarnly::simulator
