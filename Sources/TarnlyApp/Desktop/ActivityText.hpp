#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace tarnly {

/// "No client is paired.", "1 client is paired.", "2 clients are paired."
std::string clientsText(std::size_t pairedClients);

/// "No recording is running.", or its duration as "Recording for 0:05." or "Recording for 1:00:05."
std::string recordingText(const std::optional<std::chrono::seconds>& recordingFor);

} // namespace tarnly
