#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TarnlyPlatform/JsonRecord.hpp"

namespace tarnly {

/// The user's settings, as they stand in the settings file.
struct AppSettings {
    /// Absent: pairing is open.
    std::optional<std::string> password;
    bool startAtLogin = false;

    bool operator==(const AppSettings&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("password", &AppSettings::password),
                          field("startAtLogin", &AppSettings::startAtLogin));
    }

    /// The settings file in the application's data folder.
    static std::filesystem::path fileIn(const std::filesystem::path& dataFolder);

    /// The settings in `file`; the defaults where it is missing, unreadable or not a settings file.
    static AppSettings load(const std::filesystem::path& file);
};

} // namespace tarnly
