#include "TarnlyTrack/Grade/Approach.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Base/TimeText.hpp"
#include "TarnlyTrack/Grade/Demand.hpp"

namespace tarnly::track {
namespace {

/// A descent through a height.
struct Descent {
    Stretch stretch;
    /// Nobody knows what the aircraft did when it came through the height.
    bool isBroken = false;
};

/// The last one in `part`, until the aircraft is above `feet` again; absent if there is none.
std::optional<Descent> lastDescent(const GradedFlight& flight, const Stretch& part, double feet) {
    std::optional<Descent> result;
    std::optional<std::size_t> known; // the sample before of which the height is known
    bool isBelow = false;
    for (auto sample = part.begin; sample < part.end; ++sample) {
        const auto height = flight.log().value(Quantity::aglFt, sample);
        if (!height) continue;
        const bool wasAbove = known && !isBelow;
        isBelow = *height <= feet;
        if (isBelow && wasAbove) {
            result = Descent{{sample, sample}, flight.isBrokenBetween(*known, sample)};
        }
        if (isBelow && result) result->stretch.end = sample + 1;
        known = sample;
    }
    return result;
}

/// The descent until the flare; if it does not come so low, until its lowest point.
Stretch approachOf(const GradedFlight& flight, const Stretch& descent) {
    auto lowest = descent.begin;
    double least = HUGE_VAL;
    for (auto sample = descent.begin; sample < descent.end; ++sample) {
        const auto height = flight.log().value(Quantity::aglFt, sample);
        if (!height || *height >= least) continue;
        if (*height <= flareFeet) return {descent.begin, std::max(sample, descent.begin + 1)};
        least = *height;
        lowest = sample;
    }
    return {descent.begin, lowest + 1};
}

Demand gearDemand(const FlightLog& log, bool isDown) {
    const auto down = [&log](std::size_t sample) -> std::optional<double> {
        const auto value = log.value(Switch::gearDown, sample);
        return value ? std::optional(*value ? 1.0 : 0.0) : std::nullopt;
    };
    return {"gear handle", "", down, isDown ? 1.0 : 0.0, isDown, Demand::Form::upOrDown};
}

/// "bank 22.5° at 3:04, at most 15° asked for"
std::string faultText(const GradedFlight& flight, const Demand& demand, const Measure& measured) {
    const auto at = " at " + timeText(flight.time(*measured.worst)) + ", ";
    const std::string what(demand.what);
    if (demand.form == Demand::Form::upOrDown) {
        return what + (demand.isLeast ? " up" + at + "down asked for" : " down" + at + "up asked for");
    }
    const std::string unit(demand.unit);
    return what + " " + tenthsText(measured.worstValue, demand.limit) + unit + at +
           (demand.isLeast ? "at least " : "at most ") + tenthsText(demand.limit) + unit + " asked for";
}

/// Adds up the time in which any of the demands is known, and in which any is not met.
void addTimes(const GradedFlight& flight, const std::vector<Demand>& demands, Grade& grade) {
    for (auto sample = grade.part.begin; sample + 1 < grade.part.end; ++sample) {
        bool isJudged = false;
        bool isOutside = false;
        for (const auto& demand : demands) {
            const auto value = demand.value(sample);
            isJudged = isJudged || value;
            isOutside = isOutside || (value && demand.excess(*value) > 0);
        }
        if (isJudged) grade.judgedSeconds += flight.flownSeconds(sample);
        if (isOutside) grade.outsideSeconds += flight.flownSeconds(sample);
    }
}

} // namespace

std::vector<Demand> approachDemands(const GradedFlight& flight, const Tolerance& tolerance) {
    const auto& log = flight.log();
    const auto quantity = [&log](Quantity which) {
        return [&log, which](std::size_t sample) { return log.value(which, sample); };
    };
    std::vector<Demand> result;
    if (tolerance.bankDegrees) result.push_back(bankDemand(log, *tolerance.bankDegrees));
    if (const auto& least = tolerance.leastPitchDegrees) {
        result.push_back({"pitch", "°", quantity(Quantity::pitchDeg), *least, true});
    }
    if (const auto& most = tolerance.mostPitchDegrees) {
        result.push_back({"pitch", "°", quantity(Quantity::pitchDeg), *most});
    }
    if (tolerance.mostDescent) result.push_back(descentDemand(flight, *tolerance.mostDescent));
    if (tolerance.gearDown) result.push_back(gearDemand(log, *tolerance.gearDown));
    if (const auto& least = tolerance.leastFlapRatio) {
        result.push_back({"flaps", "", quantity(Quantity::flapRatio), *least, true});
    }
    return result;
}

void gradeApproach(const GradedFlight& flight, const Tolerance& tolerance, Grade& grade) {
    const auto feet = tolerance.feet.value_or(0);
    const auto heightText = tenthsText(feet) + " ft AGL";
    const auto descent = lastDescent(flight, grade.part, feet);
    grade.part = descent && !descent->isBroken ? approachOf(flight, descent->stretch) : Stretch();
    if (grade.part == Stretch()) {
        grade.words = descent ? "the recording does not tell how the aircraft came down through " + heightText
                              : "the recording shows no descent through " + heightText;
        return;
    }
    const auto demands = approachDemands(flight, tolerance);
    addTimes(flight, demands, grade);
    std::string faults;
    std::string unknowns;
    for (const auto& demand : demands) {
        const auto measured = measure(flight, grade.part, demand);
        if (!measured.worst) {
            if (unknowns.ends_with(demand.what)) continue; // the least and the most of one value
            unknowns.append(unknowns.empty() ? "" : ", ").append(demand.what);
        } else if (!measured.isMet) {
            if (!grade.worst) grade.worst = measured.worst;
            faults += (faults.empty() ? "" : "; ") + faultText(flight, demand, measured);
        }
    }
    if (!faults.empty()) {
        grade.verdict = Grade::Verdict::notMet;
        grade.words = faults;
    } else if (!unknowns.empty()) {
        grade.words = "the recording does not tell: " + unknowns;
    } else {
        grade.verdict = Grade::Verdict::met;
        grade.words = "stable from " + heightText + ", at " + timeText(flight.time(grade.part.begin)) +
                      ", until " + timeText(flight.time(grade.part.end - 1));
    }
}

} // namespace tarnly::track
