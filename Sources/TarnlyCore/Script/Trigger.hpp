#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/Flight/Values.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// The records of a script: its triggers as they are loaded, tested and reported. Plain values.
namespace tarnly {

/// What a trigger waits for. Used as an enumeration; in JSON the case's own name.
class TriggerConditionKind {
  public:
    enum Case : std::uint8_t {
        reachesFix,
        crossesAgl,
        crossesAltitude,
        afterGearDown,
        afterStart,
        afterTrigger
    };

    constexpr TriggerConditionKind(Case which = reachesFix) : which_(which) {}
    constexpr operator Case() const { return which_; }

    /// Empty for a number behind the last case.
    static std::string_view name(Case which);

    /// The first case that `isWanted`.
    static std::optional<Case> find(const auto& isWanted) {
        for (std::uint8_t number = 0; !name(static_cast<Case>(number)).empty(); ++number) {
            const auto which = static_cast<Case>(number);
            if (isWanted(which)) return which;
        }
        return std::nullopt;
    }

    void writeJson(JsonWriter& writer) const;
    /// Throws `JsonError` for anything but the name of a case, letter case included.
    static TriggerConditionKind readJson(const boost::json::value& json);

  private:
    Case which_;
};

/// When a trigger fires. A condition that lacks a field of its kind never holds; fields of other kinds are
/// ignored. All have initializers: what a designated initializer leaves out is absent, without a warning.
struct TriggerCondition {
    TriggerConditionKind kind{};
    /// `reachesFix`: the identifier, in any letter case.
    std::optional<std::string> fix{};
    /// `reachesFix`: the radius in nautical miles.
    std::optional<double> withinNm{};
    /// `crossesAgl`, `crossesAltitude`: the threshold.
    std::optional<double> feet{};
    /// `crossesAgl`, `crossesAltitude`: upward or downward.
    std::optional<bool> climbing{};
    /// `afterGearDown`, `afterStart`, `afterTrigger`: the delay.
    std::optional<double> seconds{};
    /// `afterTrigger`: whose firing starts the delay.
    std::optional<std::string> afterTriggerId{};

    bool operator==(const TriggerCondition&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("kind", &TriggerCondition::kind), field("fix", &TriggerCondition::fix),
            field("withinNm", &TriggerCondition::withinNm), field("feet", &TriggerCondition::feet),
            field("climbing", &TriggerCondition::climbing), field("seconds", &TriggerCondition::seconds),
            field("afterTriggerId", &TriggerCondition::afterTriggerId));
    }
};

/// One trigger of a script: a condition on the flight, and an action that the client interprets.
struct ArmedTrigger {
    std::string id;
    std::string name;
    TriggerCondition condition;
    std::string actionKind;
    std::map<std::string, JsonScalar> action;

    const std::string& title() const { return name.empty() ? actionKind : name; }

    bool operator==(const ArmedTrigger&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("id", &ArmedTrigger::id), field("name", &ArmedTrigger::name),
                          field("condition", &ArmedTrigger::condition),
                          field("actionKind", &ArmedTrigger::actionKind),
                          field("action", &ArmedTrigger::action));
    }
};

/// A trigger that fired, with time and position of the sample on which it did.
struct FiredTrigger {
    std::string triggerId;
    std::string title;
    std::string actionKind;
    std::map<std::string, JsonScalar> action;
    /// Seconds on the recording's clock.
    double elapsed = 0;
    /// Degrees.
    std::optional<double> lat;
    std::optional<double> lon;

    bool operator==(const FiredTrigger&) const = default;
};

/// What the triggers look at in one sample of the flight.
/// All have initializers: what a designated initializer leaves out is absent, without a warning.
struct TriggerSample {
    /// Seconds on the recording's clock.
    double elapsed = 0;
    /// Degrees.
    std::optional<double> lat{};
    std::optional<double> lon{};
    std::optional<double> altFt{};
    std::optional<double> aglFt{};
    std::optional<bool> gearDown{};
    /// Over which the sample came: behind another one the aircraft may be elsewhere.
    std::int64_t link = 0;

    bool operator==(const TriggerSample&) const = default;
};

/// A trigger's place in its script, from 0.
using TriggerIndex = std::uint32_t;

/// A trigger id as a number, from 0, within its script.
using TriggerIdNumber = std::uint32_t;

/// A trigger's condition in numbers only: what a sample is tested against.
///
/// A number that the condition lacks is NaN: then every comparison with it is false, as a condition that
/// lacks something never holds.
struct TriggerTest {
    TriggerConditionKind::Case kind;
    bool climbing;
    TriggerIdNumber id;
    /// `afterTrigger`: whose firing starts the delay.
    TriggerIdNumber source;
    /// The condition's nautical miles, feet or seconds.
    double limit;
    Coordinate fix;
};

} // namespace tarnly
