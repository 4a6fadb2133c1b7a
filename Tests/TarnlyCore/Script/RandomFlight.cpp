#include "TarnlyCore/Script/RandomFlight.hpp"

#include <algorithm>

#include "TarnlyCore/Script/Triggers.hpp"

namespace tarnly::test {
namespace {

std::string numbered(const char* prefix, std::size_t number) {
    return std::string(prefix).append(std::to_string(number));
}

} // namespace

std::vector<ArmedTrigger> RandomFlight::script(std::size_t size) {
    std::vector<ArmedTrigger> triggers;
    for (std::size_t i = 0; i < size; ++i) {
        triggers.push_back({.id = id(size),
                            .name = numbered("#", i),
                            .condition = condition(size),
                            .actionKind = oneOf<std::string>({"say", "fail", ""}),
                            .action = {}});
        if (oneIn(2)) triggers.back().action["text"] = JsonScalar{"action of " + triggers.back().name};
    }
    return triggers;
}

std::vector<ArmedTrigger> RandomFlight::chains(std::size_t size) {
    auto triggers = script(size);
    for (std::size_t i = 0; i < size; ++i) {
        triggers[i].id = numbered("t", i);
        if (i == 0) triggers[i].condition = {.kind = TriggerConditionKind::afterStart, .seconds = 0};
        if (i == 0 || oneIn(20)) continue;
        // Waiting for smaller ids only, so that most of the script can fire.
        triggers[i].condition = {.kind = TriggerConditionKind::afterTrigger,
                                 .seconds = oneIn(20) ? 1.0 : 0.0,
                                 .afterTriggerId = id(i)};
    }
    std::ranges::shuffle(triggers, engine_);
    return triggers;
}

std::string RandomFlight::id(std::size_t ids) { return numbered("t", below(ids)); }

TriggerCondition RandomFlight::condition(std::size_t ids) {
    using enum TriggerConditionKind::Case;
    const auto kind = oneOf({reachesFix, crossesAgl, crossesAltitude, afterGearDown, afterStart, afterTrigger,
                             afterTrigger, afterTrigger, afterTrigger, afterTrigger});
    return {.kind = kind,
            .fix = mostly(
                oneOf<std::string>({"ksfo", "KSFO", "straße", "STRASSE", "pole", "nowhere", "Nowhere", ""})),
            .withinNm = mostly(oneOf({-1.0, 0.0, 60.0, 70.0, 6000.0, nan, infinity})),
            .feet = mostly(feet()),
            .climbing = mostly(oneIn(2)),
            .seconds = mostly(seconds()),
            .afterTriggerId = mostly(oneIn(20) ? "elsewhere" : id(ids))};
}

TriggerSample RandomFlight::sample() {
    if (oneIn(8)) link_ = static_cast<std::int64_t>(below(3));
    clock_ = oneIn(15) ? 0 : clock_ + oneOf({0.0, 0.5, 0.5, 1.0});
    TriggerSample result{.elapsed = clock_,
                         .lat = mostly(degrees()),
                         .lon = mostly(degrees()),
                         .altFt = mostly(feet()),
                         .aglFt = mostly(feet()),
                         .gearDown = std::nullopt,
                         .link = link_};
    if (!oneIn(3)) result.gearDown = oneIn(2);
    if (oneIn(40)) result.elapsed = oneOf({nan, infinity, -1.0});
    return result;
}

double RandomFlight::seconds() {
    return oneOf({0.0, 0.0, 0.0, 0.0, 0.5, 1.0, 2.0, -0.5, -1.0, nan, infinity});
}

double RandomFlight::feet() {
    return oneOf({990.0, 1000.0, 1000.0, 1010.0, 1500.0, -0.0, 0.0, nan, infinity});
}

double RandomFlight::degrees() {
    return oneOf({0.0, 0.0, 1.0, -1.0, 90.0, 180.0, -180.0, 400.0, nan, infinity});
}

} // namespace tarnly::test
