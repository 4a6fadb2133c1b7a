#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"

/// A recording as it is drawn: as much of it as a picture can show. Plain values.
namespace tarnly::track {

/// Points in the order of time; seconds since the first heartbeat, and the recording's own unit.
struct PlotLine {
    std::vector<double> at;
    std::vector<double> value;
    /// Places of the points to which no line leads.
    std::vector<std::size_t> breaks;
};

/// Degrees.
struct PlotTrack {
    std::vector<double> at;
    std::vector<double> lat;
    std::vector<double> lon;
    std::vector<std::size_t> breaks;
};

/// From, to; seconds since the first heartbeat.
using PlotStretch = std::pair<double, double>;

struct PlotTrigger {
    std::string id;
    std::string action;
    double at = 0;
};

/// A trigger of a script that would not have fired.
struct PlotMiss {
    std::string id;
    /// Why, and how near it came, in one clause.
    std::string words;
    /// The nearest moment; absent where there is none.
    std::optional<double> at;
};

/// What a script would have done, had it been loaded before the recording was started.
struct PlotTrial {
    /// Its name; any bytes.
    std::string script;
    /// In the order of firing.
    std::vector<PlotTrigger> fired;
    /// In the order of the script.
    std::vector<PlotMiss> missed;
};

/// What is permitted; absent where there is no limit.
struct PlotBand {
    std::optional<double> least;
    std::optional<double> most;
};

/// A value over the part of the flight that was judged.
struct PlotGradedValue {
    std::string name;
    std::string unit;
    PlotLine line;
    PlotBand permitted;
};

/// How well the flight kept to a tolerance.
struct PlotGrade {
    std::string title;
    /// "met", say.
    std::string verdict;
    /// What was found, in one clause.
    std::string words;
    /// The worst moment; absent where there is none.
    std::optional<double> worst;
    std::vector<PlotGradedValue> values;
    /// How long something took, for a tolerance that asks for that.
    std::optional<double> tookSeconds;
    PlotBand permittedSeconds;
};

/// What is drawn over time: the recording's key, and the finest step worth drawing, in the recording's unit.
struct PlotKey {
    std::string_view key;
    double unit;
};

constexpr std::array<PlotKey, 11> plotKeys{{{"alt_ft", 0.1},
                                            {"agl_ft", 0.1},
                                            {"bank_deg", 0.1},
                                            {"pitch_deg", 0.1},
                                            {"flap_ratio", 0.001},
                                            {"gear_ratio", 0.001},
                                            {"gear_down", 1},
                                            {"autopilot_on", 1},
                                            {"throttle_ratio", 0.001},
                                            {"mixture_ratio", 0.001},
                                            {"prop_ratio", 0.001}}};

struct PlotFlight {
    /// The file's; any bytes.
    std::string name;
    /// As in 2026-11-16T01:09:38Z; absent when the name does not tell.
    std::optional<std::string> start;
    /// Of the last sample.
    double seconds = 0;
    std::size_t samples = 0;
    /// Over ground, gaps not bridged; absent without a position.
    std::optional<double> distanceNm;
    /// Indicated.
    std::optional<double> highestFt;
    std::vector<PlotStretch> gaps;
    std::vector<PlotStretch> frozen;
    /// By `plotKeys`: empty where nothing is known. Of what each engine has, one line where all engines
    /// always agree, otherwise one for each of the first four.
    std::array<std::vector<PlotLine>, plotKeys.size()> lines;
    PlotTrack track;
    std::vector<PlotTrigger> fired;
    /// Where a script is tried on the flight; `plotFlight` leaves it absent.
    std::optional<PlotTrial> trial;
    /// One a tolerance, where the flight is graded; `plotFlight` leaves it empty.
    std::vector<PlotGrade> grades;
    /// How many samples at the end are not drawn, because time begins again there: somebody has put two
    /// recordings into one file.
    std::size_t leftOut = 0;
};

/// `columns` is how many columns of pixels show the whole flight. The moments at which triggers fired are
/// kept in its lines, and those of the samples `marked`, in any order.
PlotFlight plotFlight(const FlightLog& log, std::string name, std::optional<std::string> start,
                      std::size_t columns, std::span<const std::size_t> marked = {});

} // namespace tarnly::track
