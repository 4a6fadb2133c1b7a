#include "TarnlyApp/Settings.hpp"

#include <exception>
#include <iostream>
#include <utility>

#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {

std::filesystem::path AppSettings::fileIn(const std::filesystem::path& dataFolder) {
    return dataFolder / "settings.json";
}

AppSettings AppSettings::load(const std::filesystem::path& file) {
    const auto text = readPrivateFile(file);
    if (!text) return {};
    try {
        return decodeJson<AppSettings>(parseJson(*text));
    } catch (const JsonError&) {
        return {};
    }
}

void AppSettings::save(const std::filesystem::path& file) const {
    createPrivateFolders(file.parent_path());
    overwritePrivateFile(file, encodeJson(*this));
}

SettingsStore::SettingsStore(std::filesystem::path file, std::unique_ptr<LoginItem> loginItem)
    : file_(std::move(file)), loginItem_(std::move(loginItem)), settings_(AppSettings::load(file_)) {
    if (settings_.password == "") settings_.password.reset();
    applyStartAtLogin();
}

void SettingsStore::setPassword(std::string password) {
    thread_.check();
    settings_.password = password.empty() ? std::nullopt : std::optional(std::move(password));
    settings_.save(file_);
    if (onPasswordChange) onPasswordChange();
}

void SettingsStore::setStartAtLogin(bool startAtLogin) {
    thread_.check();
    settings_.startAtLogin = startAtLogin;
    settings_.save(file_);
    applyStartAtLogin();
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
