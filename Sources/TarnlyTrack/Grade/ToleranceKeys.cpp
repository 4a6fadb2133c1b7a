#include "TarnlyTrack/Grade/ToleranceKeys.hpp"

#include <array>
#include <cmath>
#include <string>

#include "TarnlyTrack/Grade/Approach.hpp"
#include "TarnlyTrack/Grade/Demand.hpp"

namespace tarnly::track {
namespace {

/// Looks at the values of one tolerance.
class ValueCheck {
  public:
    ValueCheck(const PlacedJson& json, const Tolerance& tolerance, ScriptFindings& findings)
        : json_(json), tolerance_(tolerance), findings_(findings) {}

    void checkSigns() {
        notBelowZero("within_ft", tolerance_.withinFeet);
        notBelowZero("bank_deg", tolerance_.bankDegrees);
        notBelowZero("descent_fpm", tolerance_.mostDescent);
        notBelowZero("at_least_s", tolerance_.atLeastSeconds);
        notBelowZero("at_most_s", tolerance_.atMostSeconds);
    }

    void checkOrder() {
        inOrder("pitch_at_most_deg", tolerance_.leastPitchDegrees, tolerance_.mostPitchDegrees);
        inOrder("at_most_s", tolerance_.atLeastSeconds, tolerance_.atMostSeconds);
    }

    void checkFlaps() {
        const auto& flaps = tolerance_.leastFlapRatio;
        if (!flaps || (*flaps >= 0 && *flaps <= 1)) return;
        tell("flap_ratio", "flaps are between 0, up, and 1, fully down; write 0.5 for half");
    }

    void checkHeight(ToleranceKind kind) {
        if (kind == ToleranceKind::heightHeld) notBelowZero("feet", tolerance_.feet);
        if (kind != ToleranceKind::stableAt || !tolerance_.feet || *tolerance_.feet > flareFeet) return;
        tell("feet", "an approach is judged down to " + tenthsText(flareFeet) +
                         " ft AGL, where the flare begins; give a greater height");
    }

    void checkPart(ToleranceKind kind) {
        const auto& [from, to] = std::pair(tolerance_.from, tolerance_.to);
        if (kind == ToleranceKind::timeBetween) {
            if (from && from == to) tell("to", "no time passes from a trigger to itself; name another one");
            return;
        }
        if (from && !to && tolerance_.toSeconds) {
            findings_.warning(json_.find("to_s")->at,
                              "without \"to\" it is a time of the recording's clock; for one after " +
                                  inQuotes(*from) + " add \"to\":" + inQuotes(*from));
        }
        if (from != to) return; // which of the two fires first nobody knows yet
        const auto begin = tolerance_.fromSeconds.value_or(from ? 0 : -HUGE_VAL);
        const auto end = tolerance_.toSeconds.value_or(to ? 0 : HUGE_VAL);
        if (begin <= end) return;
        tell(tolerance_.toSeconds ? "to_s" : "from_s", "the part ends before it begins; exchange the two");
    }

  private:
    void tell(std::string_view key, std::string text) {
        findings_.error(json_.find(key)->at, std::move(text));
    }

    void notBelowZero(std::string_view key, const std::optional<double>& value) {
        if (value && *value < 0) tell(key, inQuotes(key) + " is never below 0; give it without the sign");
    }

    void inOrder(std::string_view keyOfMost, const std::optional<double>& least,
                 const std::optional<double>& most) {
        if (!least || !most || *least <= *most) return;
        tell(keyOfMost, "the least is more than the most, so it is never met; exchange the two");
    }

    const PlacedJson& json_;
    const Tolerance& tolerance_;
    ScriptFindings& findings_;
};

} // namespace

const KindKeys& keysOf(ToleranceKind kind) {
    using Keys = std::vector<std::string_view>;
    static const Keys part{"from", "to", "from_s", "to_s"};
    static const Keys stable{"bank_deg",    "pitch_at_least_deg", "pitch_at_most_deg",
                             "descent_fpm", "gear_down",          "flap_ratio"};
    static const std::array<KindKeys, toleranceKindNames.size()> all{
        KindKeys{{"feet", "within_ft"}, {}, part}, KindKeys{{"feet", "within_ft"}, {}, part},
        KindKeys{{"bank_deg"}, {}, part}, KindKeys{{"feet"}, stable, part},
        KindKeys{{"from", "to"}, {"at_least_s", "at_most_s"}, {}}};
    return all[static_cast<std::size_t>(kind)];
}

void checkValues(const PlacedJson& json, ToleranceKind kind, const Tolerance& tolerance,
                 ScriptFindings& findings) {
    ValueCheck check(json, tolerance, findings);
    check.checkSigns();
    check.checkOrder();
    check.checkFlaps();
    check.checkHeight(kind);
    check.checkPart(kind);
}

} // namespace tarnly::track
