#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Trial/ScriptTrial.hpp"

namespace tarnly::track {

/// Flies a script over a recording, every time as if it had just been loaded.
using ScriptFlight = std::function<Trial(const FlightLog&)>;

/// Does `work` with what flies `script`, whose fixes are looked up once, where `withFixes` finds them.
/// `remark` is told when the script names fixes and there is no database. Throws `UsageError` for a script
/// that companions would refuse, and what `withFixes` throws.
void withScript(const LoadScriptRequest& script,
                const std::optional<std::filesystem::path>& navigationDatabase,
                const std::function<void(const std::string&)>& remark,
                const std::function<void(const ScriptFlight&)>& work);

} // namespace tarnly::track
