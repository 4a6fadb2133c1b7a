#include "TarnlyApp/Settings.hpp"

#include <exception>
#include <iostream>
#include <utility>

namespace tarnly {

SettingsStore::SettingsStore(std::filesystem::path file, std::unique_ptr<LoginItem> loginItem)
    : file_(std::move(file)), loginItem_(std::move(loginItem)) {
    auto loaded = AppSettings::load(file_);
    password_ = std::move(loaded.password).value_or("");
    startAtLogin_ = loaded.startAtLogin;
    applyStartAtLogin();
}

AppSettings SettingsStore::current() const {
    AppSettings settings;
    if (!password_.empty()) settings.password = password_;
    settings.startAtLogin = startAtLogin_;
    return settings;
}

void SettingsStore::setPassword(std::string password) {
    password_ = std::move(password);
    current().save(file_);
    if (onPasswordChange) onPasswordChange();
}

void SettingsStore::setStartAtLogin(bool startAtLogin) {
    startAtLogin_ = startAtLogin;
    current().save(file_);
    applyStartAtLogin();
}

void SettingsStore::applyStartAtLogin() {
    if (!loginItem_) return;
    const bool isEnabled = loginItem_->status() == LoginItem::Status::enabled;
    if (startAtLogin_ == isEnabled) return;
    try {
        startAtLogin_ ? loginItem_->registerItem() : loginItem_->unregisterItem();
    } catch (const std::exception& error) {
        std::cout << "[Tarnly] SMAppService " << (startAtLogin_ ? "register" : "unregister")
                  << " failed: " << error.what() << std::endl;
    }
}

} // namespace tarnly
