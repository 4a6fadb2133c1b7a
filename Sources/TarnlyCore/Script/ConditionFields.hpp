#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "TarnlyCore/Script/Trigger.hpp"

/// What the kinds of conditions need: the one table by which scripts are read, tested and checked. Plain.
namespace tarnly {

/// A field of a condition: what a client calls it, and the kinds that need it.
template <typename T>
struct ConditionField {
    using Value = T;

    std::string_view key;
    std::optional<T> TriggerCondition::*member;
    /// A bit for each case.
    std::uint8_t kinds;

    constexpr bool isNeededBy(TriggerConditionKind::Case kind) const { return ((kinds >> kind) & 1U) != 0; }
};

/// Calls for a field that `kinds` need, all of them.
template <typename T, typename... Kinds>
constexpr ConditionField<T> conditionField(std::string_view key, std::optional<T> TriggerCondition::*member,
                                           Kinds... kinds) {
    return {key, member, static_cast<std::uint8_t>((0U | ... | (1U << kinds)))};
}

/// All fields but the kind itself.
constexpr auto conditionFields() {
    using Kind = TriggerConditionKind;
    return std::tuple(
        conditionField("fix", &TriggerCondition::fix, Kind::reachesFix),
        conditionField("within_nm", &TriggerCondition::withinNm, Kind::reachesFix),
        conditionField("feet", &TriggerCondition::feet, Kind::crossesAgl, Kind::crossesAltitude),
        conditionField("climbing", &TriggerCondition::climbing, Kind::crossesAgl, Kind::crossesAltitude),
        conditionField("seconds", &TriggerCondition::seconds, Kind::afterGearDown, Kind::afterStart,
                       Kind::afterTrigger),
        conditionField("after_trigger_id", &TriggerCondition::afterTriggerId, Kind::afterTrigger));
}

static_assert(std::tuple_size_v<decltype(conditionFields())> + std::size_t{1} ==
                  std::tuple_size_v<decltype(fieldsOf<TriggerCondition>())>,
              "a field of a condition is missing in the table");

/// Calls `visit` with each `ConditionField`.
constexpr void forEachConditionField(const auto& visit) {
    std::apply([&](const auto&... fields) { (visit(fields), ...); }, conditionFields());
}

/// Whether it has all that its kind needs; otherwise it never holds.
constexpr bool isComplete(const TriggerCondition& condition) {
    bool result = true;
    forEachConditionField([&](const auto& field) {
        if (field.isNeededBy(condition.kind) && !(condition.*field.member)) result = false;
    });
    return result;
}

} // namespace tarnly
