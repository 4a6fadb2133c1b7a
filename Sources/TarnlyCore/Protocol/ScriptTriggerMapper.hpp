#pragma once

#include <map>
#include <stdexcept>
#include <string>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Script/TriggerCondition.hpp"

/// Turns the loosely typed condition of a script as the client sends it into that of the trigger engine.
/// Callable from any thread.
namespace tarnly::ScriptTriggerMapper {

/// Clients receive exactly `what()`: `unknownConditionKind("after_landing")`.
class MappingError : public std::runtime_error {
  public:
    static MappingError unknownConditionKind(const std::string& kind);

    /// The kind as it was received.
    const std::string& kind() const noexcept { return kind_; }

    bool operator==(const MappingError& other) const { return kind_ == other.kind_; }

  private:
    explicit MappingError(const std::string& kind);

    std::string kind_;
};

/// Every field is read whatever the kind, and none is required: a value that is missing or of the wrong JSON
/// kind is absent, and the condition then never holds. Throws `MappingError` for an unknown kind.
TriggerCondition toCondition(const std::string& kind, const std::map<std::string, JSONValue>& condition);

} // namespace tarnly::ScriptTriggerMapper
