#pragma once

#include "TarnlyTrack/Log/FlightLog.hpp"

namespace tarnly::track {

constexpr double metersPerNauticalMile = 1852;

/// Between two positions along the great circle, on a sphere of the Earth's mean radius, 6,371,008.8 m
/// (Moritz, "Geodetic Reference System 1980", Bulletin Géodésique 54, 1980). By the haversine (Sinnott,
/// "Virtues of the Haversine", Sky and Telescope 68, 1984), which keeps its digits for positions that are
/// close together, as samples are. The Earth is no sphere: up to 0.6 % too long or too short.
double greatCircleMeters(Position from, Position to);

/// The true track at the beginning of that great circle, degrees from 0 to below 360. Of two positions that
/// are the same it means nothing.
double initialTrackDeg(Position from, Position to);

/// Whether anything that flies in air comes so far in so many seconds; else the aircraft was put there. Less
/// than a tenth counts as one: the simulator tells its position no more often, and samples may follow each
/// other sooner.
bool canFly(Position from, Position to, double seconds);

} // namespace tarnly::track
