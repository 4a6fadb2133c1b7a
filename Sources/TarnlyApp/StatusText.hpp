#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarnly {

/// The line that tells the person how the companion can be reached.
///
/// `port` is shown as "?" when unknown; `instanceName` is the configured one, absent when nothing is
/// published.
std::string listeningText(std::optional<std::uint16_t> port, const std::optional<std::string>& instanceName,
                          bool passwordRequired);

/// The line after a start that failed.
std::string failureText(const std::string& error);

} // namespace tarnly
