#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TarnlyTrack/Plot/PlotFlight.hpp"

namespace tarnly::track {

/// How many flights one page lays over each other: as many as have a line of their own kind.
constexpr std::size_t mostFlights = 8;

/// In how many columns of pixels each of so many flights is kept, so that a page stays under 3 MB and opens
/// within a second on slow machines: more than a screen has, for zooming in.
std::size_t plotColumns(std::size_t flights);

/// The flights as JSON for the page; `web/plot/flights.ts` has the same as types:
///
///     {"flights":[{"name":…,"start":…,"seconds":…,"samples":…,"distance_nm":…,"highest_ft":…,
///       "gaps":[[from,to],…],"frozen":[[from,to],…],
///       "lines":{"alt_ft":[{"at":[…],"value":[…],"unit":0.1,"breaks":[…]}],…},
///       "track":{"at":[…],"lat":[…],"lon":[…],"breaks":[…]},
///       "fired":[{"id":…,"action":…,"at":…}],
///       "trial":{"script":…,"fired":[{"id":…,"action":…,"at":…}],
///         "missed":[{"id":…,"words":…,"at":…}]},
///       "grades":[{"title":…,"verdict":…,"words":…,"worst":…,"values":[{"name":…,"unit":…,"least":…,"most":…,
///         "line":{…}}],"took":{"seconds":…,"least":…,"most":…}}]}]}
///
/// Seconds count from the first heartbeat. `at`, `value`, `lat` and `lon` are whole numbers, each but the
/// first the step from the one before: hundredths of a second, units of `unit`, millionths of a degree.
/// `breaks` are places of points to which no line leads. `start`, `distance_nm` and `highest_ft` are left out
/// where nobody knows them, as is a miss's `at`, `trial` where there is none, and keys of `lines` where
/// nothing was recorded.
///
/// Nothing in it ends the element of the page in which it stands: `<` is written as an escape.
std::string plotJson(const std::vector<PlotFlight>& flights);

/// A page that needs nothing beside it, in ASCII and UTF-8.
std::string plotPage(const std::vector<PlotFlight>& flights);

} // namespace tarnly::track
