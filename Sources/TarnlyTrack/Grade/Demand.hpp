#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyTrack/Grade/GradedFlight.hpp"

/// One number of the flight and its limit, sample by sample. Plain values and functions of them.
namespace tarnly::track {

/// What a value must not go beyond.
struct Demand {
    enum class Form {
        number,
        /// 0 is up, 1 is down.
        upOrDown
    };

    /// "bank"
    std::string_view what;
    std::string_view unit;
    /// What the recording says of a sample; absent where it does not tell.
    std::function<std::optional<double>(std::size_t sample)> value;
    double limit = 0;
    /// Otherwise it is the most.
    bool isLeast = false;
    Form form = Form::number;

    /// How far beyond the limit a number is; 0 or less for one that is permitted.
    double excess(double number) const;
};

/// How a demand was met in a part of the flight.
struct Measure {
    /// Of the samples whose value is known the first one that is nearest the limit, or farthest beyond it;
    /// absent where none is known.
    std::optional<std::size_t> worst{};
    double worstValue = 0;
    bool isMet = true;
    /// How much of the time that was flown the value is known, and beyond the limit.
    double judgedSeconds = 0;
    double outsideSeconds = 0;
};

/// Of the bank, to either side, in degrees. The log outlives it.
Demand bankDemand(const FlightLog& log, double most);

/// Of the fastest descent, in feet a minute, from the indicated altitudes some 2.5 s before and behind;
/// negative in a climb. Unknown where these are, or a gap lies between. Figures of a shorter time would be
/// noise: two samples half a second apart that are rounded to a foot are off by 120 ft/min. The flight
/// outlives it.
Demand descentDemand(const GradedFlight& flight, double most);

Measure measure(const GradedFlight& flight, const Stretch& part, const Demand& demand);

/// With a tenth at most: "1500", "22.5".
std::string tenthsText(double value);

/// The same of a value that is to be compared with a limit: with all digits where a tenth would make a value
/// beyond the limit look like it.
std::string tenthsText(double value, double limit);

/// "60.5 s"
std::string secondsText(double seconds);

} // namespace tarnly::track
