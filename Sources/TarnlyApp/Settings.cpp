#include "TarnlyApp/Settings.hpp"

#include <exception>
#include <iostream>
#include <optional>
#include <utility>

#include "TarnlyApp/Remark.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {

namespace {

Phrase unreadText(const SettingsFile& file) {
    return Phrase::of(
        "The settings could not be read, and no password is asked for: %1 cannot be read, or is not a "
        "settings file. Set the password anew, or mend the file and start again; the file is kept as %2 "
        "before anything is saved over it.",
        printable(file.path().string()), file.keptPath().filename().string());
}

/// The same once it has been saved over.
Phrase replacedText(const SettingsFile& file) {
    return Phrase::of(
        "The settings could not be read, and no password is asked for: what stood in %1 is kept as %2. Set "
        "the password anew; where there is to be none, type one and clear it again.",
        printable(file.path().string()), file.keptPath().filename().string());
}

Phrase unsavedText(const SettingsFile& file, const std::exception& error) {
    return Phrase::of(
        "The settings could not be saved: %1: %2. They hold until Tarnly ends; make the folder one that you "
        "may write to, with some space on its disk, and set them again.",
        printable(file.path().string()), error.what());
}

Phrase faultText(const SettingsFile& file, const SettingFault& fault) {
    return Phrase::of(
        "The setting \"%1\" in %2 cannot be used, and it is as usual: %3. Set it anew, or mend the file and "
        "start again.",
        fault.key, printable(file.path().string()), fault.wanted);
}

} // namespace

class SettingsStore::Disk {
  public:
    explicit Disk(std::filesystem::path file) : file_(std::move(file)), wasUnreadable_(file_.isUnreadable()) {
        problems_.with([&](auto& problems) {
            if (wasUnreadable_) {
                problems.unread = unreadText(file_);
            } else if (file_.initial().passwordLostIn) {
                problems.unread = replacedText(file_);
            }
            problems.faults = file_.faults();
        });
    }

    const AppSettings& initial() const { return file_.initial(); }
    bool wasUnreadable() const { return wasUnreadable_; }

    std::vector<Phrase> problems() const {
        std::vector<Phrase> all;
        const auto known = problems_.copy();
        for (const auto& problem : {known.unread, known.unsaved})
            if (problem) all.push_back(*problem);
        for (const auto& fault : known.faults)
            all.push_back(faultText(file_, fault));
        return all;
    }

    /// Whatever stood in the file: somebody has said which password there is to be.
    void forgetUnread() {
        problems_.with([](auto& problems) { problems.unread.reset(); });
    }

    /// What stood in the file for settings that have a value now.
    void forgetFaults(const AppSettings& settings) {
        problems_.with([&](auto& problems) {
            std::erase_if(problems.faults, [&](const auto& fault) { return settings.has(fault.key); });
        });
    }

    /// On the saver's thread.
    void save(const AppSettings& settings) {
        try {
            file_.save(settings);
        } catch (const std::exception& error) {
            return noteUnsaved(unsavedText(file_, error));
        }
        const auto replaced = replacedText(file_);
        problems_.with([&](auto& problems) {
            problems.unsaved.reset();
            if (problems.unread) problems.unread = replaced;
        });
    }

  private:
    struct Problems {
        std::optional<Phrase> unread;
        std::optional<Phrase> unsaved;
        std::vector<SettingFault> faults;
    };

    void noteUnsaved(const Phrase& text) {
        const auto before =
            problems_.with([&](auto& problems) { return std::exchange(problems.unsaved, text); });
        if (text != before) remark(text.text());
    }

    SettingsFile file_;
    const bool wasUnreadable_;
    Guarded<Problems> problems_;
};

SettingsStore::SettingsStore(std::filesystem::path file, std::unique_ptr<LoginItem> loginItem)
    : disk_(std::make_shared<Disk>(std::move(file))),
      loginItem_(std::move(loginItem)),
      settings_(disk_->initial()),
      saver_([disk = disk_](const AppSettings& settings) { disk->save(settings); }) {
    if (settings_.password == "") settings_.password.reset();
    if (!disk_->wasUnreadable()) applyStartAtLogin(); // nobody knows what was wanted
}

std::vector<Phrase> SettingsStore::problems() const { return disk_->problems(); }

void SettingsStore::setPassword(std::string password) {
    thread_.check();
    settings_.password = password.empty() ? std::nullopt : std::optional(std::move(password));
    settings_.passwordLostIn.reset();
    disk_->forgetUnread();
    saver_.save(settings_);
    if (onPasswordChange) onPasswordChange();
}

void SettingsStore::keepSetup() {
    thread_.check();
    disk_->forgetFaults(settings_);
    saver_.save(settings_);
    if (onSetupChange) onSetupChange();
}

void SettingsStore::setStartAtLogin(bool startAtLogin) {
    thread_.check();
    settings_.startAtLogin = startAtLogin;
    saver_.save(settings_);
    applyStartAtLogin();
}

void SettingsStore::applyStartAtLogin() {
    thread_.check();
    if (!loginItem_) return;
    const bool wanted = settings_.startAtLogin;
    using Status = LoginItem::Status;
    const auto status = loginItem_->status();
    // Options of the day on which it was made would go before the settings for good.
    if (wanted && status == Status::enabled) return;
    if (!wanted && status != Status::enabled && status != Status::outdated) return;
    try {
        wanted ? loginItem_->enable() : loginItem_->disable();
    } catch (const std::exception& error) {
        std::cout << "[Tarnly] SMAppService " << (wanted ? "register" : "unregister")
                  << " failed: " << error.what() << std::endl;
    }
}

} // namespace tarnly
