#include "TarnlyApp/Desktop/CompanionThread.hpp"

#include <QApplication>
#include <memory>
#include <stdexcept>
#include <utility>

#include "TarnlyApp/StartAtLogin.hpp"

namespace tarnly {
namespace {

/// Absent where the system does not tell where it would be, for example for a person without a home folder.
std::unique_ptr<LoginItem> loginItem(const CompanionOptions& options) {
    try {
        return makeLoginItem(options);
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

} // namespace

AppDelegate::AppDelegate(CompanionOptions options)
    : options_(std::move(options)),
      settingsStore_(AppSettings::fileIn(dataFolder(options_)), loginItem(options_)) {}

AppDelegate::~AppDelegate() { applicationWillTerminate(); }

CompanionRuntime& AppDelegate::runtime() {
    if (!runtime_) runtime_.emplace(settingsStore_, options_);
    return *runtime_;
}

void AppDelegate::applicationDidFinishLaunching() {
    QApplication::setQuitOnLastWindowClosed(false);
    runtime().start();
    network_ = std::thread([&runtime = runtime()] { runtime.run(); });
}

void AppDelegate::applicationWillTerminate() {
    if (!network_.joinable()) return;
    runtime_->end();
    network_.join();
}

} // namespace tarnly
