#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyApp/SettingsFile.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

/// The settings while the application runs: every change is saved at once, told to the companion, and the
/// login item is kept in step with it.
///
/// One per application. Belongs to the main thread, except for what says otherwise. Nothing here fails: what
/// cannot be saved stays in memory, and is told as a problem.
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

    /// Whether the settings could not be read, or not saved, and what to do: whole sentences. From any
    /// thread.
    std::optional<std::string> problem() const { return problem_.copy(); }

    /// Saves, then calls `onPasswordChange`.
    void setPassword(std::string password);

    /// Saves, then applies.
    void setStartAtLogin(bool startAtLogin);

    /// Registers or unregisters the login item where it differs from the setting. A failure is one line on
    /// standard output; the setting keeps its value.
    void applyStartAtLogin();

    std::function<void()> onPasswordChange;

  private:
    void save();

    OnOneThread thread_;
    SettingsFile file_;
    const std::unique_ptr<LoginItem> loginItem_;
    AppSettings settings_;
    Guarded<std::optional<std::string>> problem_;
};

} // namespace tarnly
