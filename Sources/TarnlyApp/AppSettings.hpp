#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

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

    /// The settings in `file`; the defaults where it is missing, unreadable or not a settings file. A file
    /// that others could read is made its owner's only.
    static AppSettings load(const std::filesystem::path& file);

    /// Writes `file`, with the folders above it, for its owner only. A failure leaves things as they were.
    void save(const std::filesystem::path& file) const;
};

} // namespace tarnly
