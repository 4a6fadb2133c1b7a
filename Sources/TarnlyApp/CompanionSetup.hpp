#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyApp/CompanionOptions.hpp"
#include "TarnlyApp/SettingsFile.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {

/// What a companion goes by: the options of this run where they say something, else the settings, else what
/// is usual. A plain value.
struct CompanionSetup {
    /// Holds for a whole run, as does `ports`.
    Endpoint simulator;
    /// To listen on, the first that is free.
    std::vector<std::uint16_t> ports;
    /// To be found by; absent: not at all.
    std::optional<std::string> name;
    /// Absent: where the simulator's own is found.
    std::optional<std::filesystem::path> situationsFolder;
    std::optional<std::filesystem::path> navigationDatabase;
    /// Of web pages that may use the companion.
    std::vector<WebOrigin> allowedOrigins;

    bool operator==(const CompanionSetup&) const = default;
};

/// `settings` are as `SettingsFile` gives them. Paths come out absolute.
CompanionSetup setupFrom(const CompanionOptions& options, const AppSettings& settings);

} // namespace tarnly
