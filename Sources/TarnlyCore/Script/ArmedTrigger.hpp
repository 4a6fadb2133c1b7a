#pragma once

#include <map>
#include <string>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Script/TriggerCondition.hpp"

namespace tarnly {

/// One trigger of a script: a condition on the flight, and an action that the client interprets.
struct ArmedTrigger {
    std::string id;
    std::string name;
    TriggerCondition condition;
    std::string actionKind;
    std::map<std::string, JSONValue> action;

    const std::string& title() const { return name.empty() ? actionKind : name; }

    bool operator==(const ArmedTrigger&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("id", &ArmedTrigger::id), field("name", &ArmedTrigger::name),
                          field("condition", &ArmedTrigger::condition),
                          field("actionKind", &ArmedTrigger::actionKind),
                          field("action", &ArmedTrigger::action));
    }
};

} // namespace tarnly
