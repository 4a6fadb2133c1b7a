#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "TarnlyApp/AppSettings.hpp"
#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

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
    const std::string& password() const { return password_; }
    bool startAtLogin() const { return startAtLogin_; }

    /// The settings as they are saved: without a password when it is empty.
    AppSettings current() const;

    /// Saves, then calls `onPasswordChange`.
    void setPassword(std::string password);

    /// Saves, then applies.
    void setStartAtLogin(bool startAtLogin);

    /// Registers or unregisters the login item where it differs from the setting. A failure is one line on
    /// standard output; the setting keeps its value.
    void applyStartAtLogin();

    std::function<void()> onPasswordChange;

  private:
    const std::filesystem::path file_;
    const std::unique_ptr<LoginItem> loginItem_;
    std::string password_;
    bool startAtLogin_ = false;
};

} // namespace tarnly
