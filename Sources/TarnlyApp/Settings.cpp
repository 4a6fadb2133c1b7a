#include "TarnlyApp/Settings.hpp"

#include <exception>
#include <iostream>
#include <utility>

#include "TarnlyApp/Remark.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {

namespace {

std::string unreadableText(const SettingsFile& file) {
    return "The settings could not be read, and no password is asked for: " +
           printable(file.path().string()) +
           " cannot be read, or is not a settings file. Set the password anew, or mend the file and start "
           "again; "
           "the file is kept as " +
           file.keptPath().filename().string() + " before anything is saved over it.";
}

std::string unsavedText(const SettingsFile& file, const std::exception& error) {
    return "The settings could not be saved: " + printable(file.path().string()) + ": " + error.what() +
           ". They hold until Tarnly ends; make the folder one that you may write to, with some space on its "
           "disk, and set them again.";
}

} // namespace

SettingsStore::SettingsStore(std::filesystem::path file, std::unique_ptr<LoginItem> loginItem)
    : file_(std::move(file)), loginItem_(std::move(loginItem)), settings_(file_.initial()) {
    if (file_.isUnreadable()) problem_.with([&](auto& problem) { problem = unreadableText(file_); });
    if (settings_.password == "") settings_.password.reset();
    if (!file_.isUnreadable()) applyStartAtLogin(); // nobody knows what was wanted
}

void SettingsStore::setPassword(std::string password) {
    thread_.check();
    settings_.password = password.empty() ? std::nullopt : std::optional(std::move(password));
    save();
    if (onPasswordChange) onPasswordChange();
}

void SettingsStore::setStartAtLogin(bool startAtLogin) {
    thread_.check();
    settings_.startAtLogin = startAtLogin;
    save();
    applyStartAtLogin();
}

void SettingsStore::save() {
    std::optional<std::string> failure;
    try {
        file_.save(settings_);
    } catch (const std::exception& error) {
        failure = unsavedText(file_, error);
    }
    const auto before = problem_.with([&](auto& problem) { return std::exchange(problem, failure); });
    if (failure && failure != before) remark(*failure);
}

void SettingsStore::applyStartAtLogin() {
    thread_.check();
    if (!loginItem_) return;
    const bool wanted = settings_.startAtLogin;
    const bool isEnabled = loginItem_->status() == LoginItem::Status::enabled;
    if (wanted == isEnabled) return;
    try {
        wanted ? loginItem_->enable() : loginItem_->disable();
    } catch (const std::exception& error) {
        std::cout << "[Tarnly] SMAppService " << (wanted ? "register" : "unregister")
                  << " failed: " << error.what() << std::endl;
    }
}

} // namespace tarnly
