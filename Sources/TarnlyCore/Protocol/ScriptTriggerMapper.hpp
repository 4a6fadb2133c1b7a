#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Script/Trigger.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyPlatform/Base/Error.hpp"

/// Turns a script as the client sends it, with its loosely typed conditions, into that of the trigger engine.
/// Callable from any thread.
namespace tarnly::ScriptTriggerMapper {

/// Clients receive exactly `what()`, with the kind as it was received:
/// `unknownConditionKind("after_landing")`.
struct MappingErrorCases {
    enum class Case { unknownConditionKind };
    static constexpr std::array<std::string_view, 1> names{"unknownConditionKind"};
};
using MappingError = Error<MappingErrorCases>;

/// What a client calls the kind; empty for a number behind the last case.
std::string_view wireName(TriggerConditionKind::Case kind);

/// The kind that a client calls so, letter case included; absent where there is none.
std::optional<TriggerConditionKind> kindNamed(std::string_view name);

/// Every field is read whatever the kind, and none is required: a value that is missing or of the wrong
/// JSON kind is absent, and the condition then never holds. Throws `MappingError` for an unknown kind.
TriggerCondition toCondition(const std::string& kind, const std::map<std::string, JsonScalar>& condition);

/// The engine of `script`. Throws `MappingError`, `ProtocolLimitError` where it is larger than scripts may
/// be, and what `fixResolver` throws.
TriggerEngine toEngine(LoadScriptRequest script, const FixResolver& fixResolver);

} // namespace tarnly::ScriptTriggerMapper
