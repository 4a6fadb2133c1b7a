#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <vector>

#include "Fuzz/Targets.hpp"
#include "TarnlyCore/Script/ReferenceEngine.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"

namespace tarnly::fuzz {
namespace {

constexpr std::size_t mostTriggers = 40;
constexpr std::size_t mostSamples = 20;
constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Few of each, so that they meet.
constexpr double degrees[] = {0, 1, -1, 0.01, 90, -90, 180, 1e300, infinite, nan};
constexpr double feet[] = {0, 500, 499.9, 500.1, -500, 1000, 1e300, -infinite, nan};
constexpr double seconds[] = {0, 0.5, 1, 2, -1, 1e300, infinite, nan};
const std::string texts[] = {"", "a", "b", "c", "A", "ksfo", "KSFO", "stra\u00DFe", "pole", "nowhere"};

std::optional<Coordinate> fixPosition(const std::string& ident) {
    static const std::map<std::string, Coordinate> positions = {
        {"KSFO", {0, 0}}, {"STRASSE", {1, 1}}, {"POLE", {90, 0}}, {"", {nan, infinite}}};
    const auto found = positions.find(ident);
    return found == positions.end() ? std::nullopt : std::optional(found->second);
}

template <typename T, std::size_t size>
std::optional<T> mostly(Choices& choices, const T (&values)[size]) {
    const auto chosen = choices.below(size + 1);
    return chosen == size ? std::nullopt : std::optional<T>(values[chosen]);
}

TriggerCondition conditionFrom(Choices& choices) {
    constexpr TriggerConditionKind::Case kinds[] = {
        TriggerConditionKind::afterTrigger,  TriggerConditionKind::reachesFix,
        TriggerConditionKind::crossesAgl,    TriggerConditionKind::crossesAltitude,
        TriggerConditionKind::afterGearDown, TriggerConditionKind::afterStart};
    constexpr bool either[] = {false, true};
    TriggerCondition condition;
    condition.kind = choices.oneOf(kinds);
    condition.fix = mostly(choices, texts);
    condition.withinNm = mostly(choices, feet);
    condition.feet = mostly(choices, feet);
    condition.climbing = mostly(choices, either);
    condition.seconds = mostly(choices, seconds);
    condition.afterTriggerId = mostly(choices, texts);
    return condition;
}

std::vector<ArmedTrigger> scriptFrom(Choices& choices) {
    std::vector<ArmedTrigger> script(choices.below(mostTriggers));
    for (std::size_t number = 0; number < script.size(); ++number) {
        script[number].id = choices.oneOf(texts);
        script[number].name = std::to_string(number);
        script[number].condition = conditionFrom(choices);
    }
    return script;
}

TriggerSample sampleFrom(Choices& choices) {
    constexpr bool either[] = {false, true};
    TriggerSample sample;
    sample.elapsed = choices.oneOf(seconds);
    sample.lat = mostly(choices, degrees);
    sample.lon = mostly(choices, degrees);
    sample.altFt = mostly(choices, feet);
    sample.aglFt = mostly(choices, feet);
    sample.gearDown = mostly(choices, either);
    sample.link = static_cast<std::int64_t>(choices.below(2));
    return sample;
}

/// NaN equals NaN here.
std::string described(const std::vector<FiredTrigger>& triggers) {
    std::ostringstream out;
    for (const auto& fired : triggers) {
        out << fired.triggerId << ' ' << fired.title << ' ' << fired.elapsed << ' '
            << fired.lat.value_or(-1000) << ' ' << fired.lon.value_or(-1000) << '\n';
    }
    return out.str();
}

std::string namesOf(const std::vector<ArmedTrigger>& triggers) {
    std::string out;
    for (const auto& trigger : triggers)
        out += trigger.name + '\n';
    return out;
}

} // namespace

void script(std::string_view bytes) {
    Choices choices(bytes);
    const auto triggers = scriptFrom(choices);
    TriggerEngine engine(triggers, fixPosition);
    test::ReferenceEngine reference(triggers, fixPosition);
    require(engine.unresolvedFixes() == reference.unresolvedFixes(), "the same fixes are missing");
    for (std::size_t number = 0; number < mostSamples && !choices.isAtEnd(); ++number) {
        const auto sample = sampleFrom(choices);
        const auto fired = engine.evaluate(sample).described();
        require(described(fired) == described(reference.evaluate(sample)), "the same triggers fire");
        require(namesOf(engine.waiting()) == namesOf(reference.waiting()), "the same triggers wait");
        if (choices.below(16) == 15) {
            engine.reset();
            reference.reset();
        }
    }
    require(described(engine.fired()) == described(reference.fired()), "the same triggers have fired");
}

} // namespace tarnly::fuzz
