#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/Script/ConditionFields.hpp"
#include "TarnlyCore/Script/Trigger.hpp"
#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"
#include "TarnlyPlatform/Json/PlacedJson.hpp"

namespace tarnly {

/// What one trigger of a script says, as far as it can be read. Points into the script's JSON.
struct CheckedTrigger {
    const PlacedJson* json = nullptr;
    /// Absent where it is no text.
    std::optional<std::string> id{};
    /// The byte of the id's value, where there is one.
    std::size_t idAt = 0;
    /// Absent where the kind is unknown, or the values cannot be read.
    std::optional<TriggerCondition> condition{};
    const PlacedJson* conditionJson = nullptr;

    /// The byte of the value of a condition that is there, or else of the condition.
    template <typename T>
    std::size_t placeOf(std::optional<T> TriggerCondition::*member) const {
        std::string_view key;
        forEachConditionField([&](const auto& field) {
            if constexpr (std::is_same_v<typename std::decay_t<decltype(field)>::Value, T>)
                if (field.member == member) key = field.key;
        });
        return placeOf(key);
    }

  private:
    std::size_t placeOf(std::string_view conditionKey) const;
};

/// Looks at one trigger by itself. It is read in the way of companions, from the same tables.
CheckedTrigger checkTrigger(const PlacedJson& trigger, ScriptFindings& findings);

} // namespace tarnly
