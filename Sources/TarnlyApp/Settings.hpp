#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

/// The user's settings, as they stand in the settings file. A plain value.
struct AppSettings {
    /// Absent: pairing is open.
    std::optional<std::string> password;
    bool startAtLogin = false;

    bool operator==(const AppSettings&) const = default;

    /// A further field needs a default here: without it no file that is there today would be one any more,
    /// and every password would be lost.
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

/// The settings while the application runs: every change is saved at once, told to the companion, and the
/// login item is kept in step with it.
///
/// One per application. Belongs to the main thread. Nothing here fails: what cannot be saved stays in memory.
class SettingsStore {
  public:
    /// Loads `file`, then applies the start at login. Without a `loginItem` the program has none.
    SettingsStore(std::filesystem::path file, std::unique_ptr<LoginItem> loginItem);

    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    /// Empty: no password, pairing is open.
    std::string password() const { return settings_.password.value_or(""); }
    bool startAtLogin() const { return settings_.startAtLogin; }

    /// The settings as they are saved: without a password when it is empty.
    const AppSettings& current() const { return settings_; }

    /// Saves, then calls `onPasswordChange`.
    void setPassword(std::string password);

    /// Saves, then applies.
    void setStartAtLogin(bool startAtLogin);

    /// Registers or unregisters the login item where it differs from the setting. A failure is one line on
    /// standard output; the setting keeps its value.
    void applyStartAtLogin();

    std::function<void()> onPasswordChange;

  private:
    OnOneThread thread_;
    const std::filesystem::path file_;
    const std::unique_ptr<LoginItem> loginItem_;
    AppSettings settings_;
};

} // namespace tarnly
