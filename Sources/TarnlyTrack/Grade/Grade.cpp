#include "TarnlyTrack/Grade/Grade.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"
#include "TarnlyTrack/Grade/Approach.hpp"
#include "TarnlyTrack/Grade/Demand.hpp"
#include "TarnlyTrack/Grade/FlightPart.hpp"
#include "TarnlyTrack/Grade/GradedFlight.hpp"

namespace tarnly::track {
namespace {

/// Grades one tolerance.
class Grading {
  public:
    Grading(const GradedFlight& flight, const Tolerance& tolerance) : flight_(flight), tolerance_(tolerance) {
        grade_.id = tolerance.id;
        grade_.title = tolerance.title();
    }

    Grade result() && {
        const auto part = partOf(flight_, tolerance_);
        grade_.part = flight_.samplesFrom(part.begin, part.end);
        if (!part.missing.empty() || grade_.part.begin == grade_.part.end) {
            grade_.part = {};
            notJudged(part.missing.empty() ? "the recording has nothing of this part of the flight"
                                           : part.missing);
        } else {
            judge(part);
        }
        return std::move(grade_);
    }

  private:
    void judge(const FlightPart& part) {
        const auto kind = std::ranges::find(toleranceKindNames, tolerance_.kind) - toleranceKindNames.begin();
        switch (static_cast<ToleranceKind>(kind)) {
            case ToleranceKind::altitudeHeld:
                return held(Quantity::altitudeFt, "altitude");
            case ToleranceKind::heightHeld:
                return held(Quantity::aglFt, "height above ground");
            case ToleranceKind::bankNotExceeded:
                return bankNotExceeded();
            case ToleranceKind::stableAt:
                return gradeApproach(flight_, tolerance_, grade_);
            case ToleranceKind::timeBetween:
                return timeBetween(part);
        }
    }

    void notJudged(std::string words) {
        grade_.verdict = Grade::Verdict::notJudged;
        grade_.words = std::move(words);
    }

    void judge(bool isMet, std::string words) {
        grade_.verdict = isMet ? Grade::Verdict::met : Grade::Verdict::notMet;
        grade_.words = std::move(words);
    }

    Measure take(const Demand& demand) {
        const auto measured = measure(flight_, grade_.part, demand);
        grade_.worst = measured.worst;
        grade_.judgedSeconds = measured.judgedSeconds;
        grade_.outsideSeconds = measured.outsideSeconds;
        return measured;
    }

    /// Of `worst`, the worst moment in words, the rest of the sentence.
    void judge(const Measure& measured, const std::string& worst) {
        auto words = worst + ", at " + timeText(flight_.time(*measured.worst));
        if (measured.outsideSeconds > 0) words += "; outside for " + secondsText(measured.outsideSeconds);
        const auto flown =
            flight_.between(flight_.time(grade_.part.begin), flight_.time(grade_.part.end - 1)).flown;
        // A sample or two without a value are nothing to tell of.
        constexpr double muchUnknown = 2;
        if (flown - measured.judgedSeconds >= muchUnknown) {
            words += "; known for " + secondsText(measured.judgedSeconds) + " of " + secondsText(flown);
        }
        judge(measured.isMet, std::move(words));
    }

    void held(Quantity quantity, std::string_view what) {
        const auto feet = tolerance_.feet.value_or(0);
        const auto within = tolerance_.withinFeet.value_or(0);
        const auto& log = flight_.log();
        const auto off = [&](std::size_t sample) -> std::optional<double> {
            const auto value = log.value(quantity, sample);
            return value ? std::optional(std::abs(*value - feet)) : std::nullopt;
        };
        const auto measured = take({what, "ft", off, within});
        if (!measured.worst) return notJudged("the recording does not tell the " + std::string(what));
        if (measured.worstValue <= limitSlack) {
            return judge(measured, "always at " + tenthsText(feet) + " ft");
        }
        const bool isAbove = log.value(quantity, *measured.worst).value_or(0) > feet;
        judge(measured, "farthest " + tenthsText(measured.worstValue, within) + " ft " +
                            (isAbove ? "above " : "below ") + tenthsText(feet) + " ft");
    }

    void bankNotExceeded() {
        const auto most = tolerance_.bankDegrees.value_or(0);
        const auto measured = take(bankDemand(flight_.log(), most));
        if (!measured.worst) return notJudged("the recording does not tell the bank");
        judge(measured, "steepest " + tenthsText(measured.worstValue, most) + "°");
    }

    void timeBetween(const FlightPart& part) {
        const auto passed = flight_.between(part.begin, part.end);
        grade_.judgedSeconds = passed.flown;
        const auto least = tolerance_.atLeastSeconds.value_or(-HUGE_VAL);
        const auto most = tolerance_.atMostSeconds.value_or(HUGE_VAL);
        // In a gap the aircraft may have flown all the time, or not at all.
        const auto longest = passed.flown + passed.unknown;
        auto words = secondsText(passed.flown) + " from " + inQuotes(*tolerance_.from) + " to " +
                     inQuotes(*tolerance_.to);
        if (passed.frozen > 0) words += ", and " + secondsText(passed.frozen) + " frozen, which do not count";
        if (passed.unknown > 0) words += ", and " + secondsText(passed.unknown) + " in gaps";
        if (passed.flown > most + limitSlack) {
            judge(false, words + "; at most " + secondsText(most) + " asked for");
        } else if (longest < least - limitSlack) {
            judge(false, words + "; at least " + secondsText(least) + " asked for");
        } else if (longest > most + limitSlack || passed.flown < least - limitSlack) {
            notJudged(words + ", which may have been flown");
        } else {
            judge(true, words);
        }
    }

    const GradedFlight& flight_;
    const Tolerance& tolerance_;
    Grade grade_;
};

} // namespace

std::string_view verdictWords(Grade::Verdict verdict) {
    switch (verdict) {
        case Grade::Verdict::met:
            return "met";
        case Grade::Verdict::notMet:
            return "not met";
        case Grade::Verdict::notJudged:
            break;
    }
    return "not judged";
}

std::vector<Grade> gradesOf(const FlightLog& log, const std::vector<Tolerance>& tolerances) {
    const GradedFlight flight(log);
    std::vector<Grade> grades;
    grades.reserve(tolerances.size());
    for (const auto& tolerance : tolerances)
        grades.push_back(Grading(flight, tolerance).result());
    return grades;
}

} // namespace tarnly::track
