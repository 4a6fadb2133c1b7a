#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

/// Flies `script` over each of the recordings `logs`, every time as if it had just been loaded, and prints
/// what fires, and how near the rest comes. Throws `UsageError` for a script that companions would refuse and
/// for files that cannot be read.
void tryOut(const CommandContext& context, const LoadScriptRequest& script,
            const std::vector<std::filesystem::path>& logs,
            const std::optional<std::filesystem::path>& navigationDatabase);

} // namespace tarnly::client
