#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "TarnlyApp/SettingsFile.hpp"
#include "TarnlyApp/SettingsSaver.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Login/LoginItem.hpp"

namespace tarnly {

/// The settings while the application runs: every change is told to the companion and saved at once, and the
/// login item is kept in step with it. A thread of its own saves: nobody waits for the disk.
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

    /// Whether the settings could not be read, or not saved, or one cannot be used, and what to do: whole
    /// sentences. That they could not be read counts until somebody has said which password there is to be,
    /// and that one cannot be used until it is set. From any thread.
    std::vector<Phrase> problems() const;

    /// Saves, and calls `onPasswordChange`.
    void setPassword(std::string password);

    /// Saves, and calls `onSetupChange`: for what the companion goes by, which is absent where it is as
    /// usual.
    template <typename Value>
    void set(std::optional<Value> AppSettings::*setting, std::type_identity_t<std::optional<Value>> value) {
        if (settings_.*setting == value) return;
        settings_.*setting = std::move(value);
        keepSetup();
    }

    /// Saves, and applies.
    void setStartAtLogin(bool startAtLogin);

    /// Waits until all is saved or refused, for ten seconds at most. The end of this object does that too.
    void finishSaving() { saver_.finish(); }

    /// Registers or unregisters the login item where it differs from the setting, and registers one anew that
    /// has other arguments than it should. A failure is one line on
    /// standard output; the setting keeps its value.
    void applyStartAtLogin();

    std::function<void()> onPasswordChange;
    std::function<void()> onSetupChange;

  private:
    void keepSetup();

    /// The file, and what is wrong with it. The saver's thread has a share in it.
    class Disk;

    OnOneThread thread_;
    const std::shared_ptr<Disk> disk_;
    const std::unique_ptr<LoginItem> loginItem_;
    AppSettings settings_;
    // depends-on: disk_
    SettingsSaver saver_;
};

} // namespace tarnly
