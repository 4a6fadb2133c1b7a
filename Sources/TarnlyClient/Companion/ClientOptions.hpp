#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tarnly::client {

/// What holds for every subcommand.
struct ClientOptions {
    /// Of several companions the one of this name.
    std::optional<std::string> instance;
    /// With `port` where the companion is; without them it is looked for.
    std::optional<std::string> host;
    std::uint16_t port = 0;
    std::optional<std::filesystem::path> passwordFile;
    /// One JSON object a line instead of text for people.
    bool json = false;
    /// How long to look for companions, and to wait for each answer.
    std::chrono::milliseconds timeout{10'000};
};

} // namespace tarnly::client
