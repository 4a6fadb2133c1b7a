#include "TarnlyApp/Desktop/AppDelegate.hpp"

#include <QApplication>
#include <utility>

#include "TarnlyApp/StartAtLogin.hpp"

namespace tarnly {

AppDelegate::AppDelegate(CompanionOptions options)
    : options_(std::move(options)),
      settingsStore_(AppSettings::fileIn(dataFolder(options_)),
                     makeLoginItem(applicationBesideThisProgram(), options_)) {}

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
