#include "TarnlyApp/Desktop/TarnlyMacApp.hpp"

#include <QApplication>

namespace tarnly {
namespace {

void bringUp(QWidget& window) {
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

TarnlyMacApp::TarnlyMacApp(const CompanionOptions& options)
    : delegate_(options),
      runtime_(delegate_.runtime()),
      panel_(runtime_),
      addresses_(runtime_),
      settings_(delegate_.settingsStore()),
      menuBarExtra_(panel_, options.startsInBackground) {
    connect(&panel_, &MenuBarContentView::addressesRequested, this, [this] { bringUp(addresses_); });
    connect(&panel_, &MenuBarContentView::settingsRequested, this, [this] { bringUp(settings_); });
    // `quit` would ask the windows first.
    connect(&panel_, &MenuBarContentView::quitRequested, qApp, [] { QApplication::exit(); });
    connect(&quitSignals_, &QuitSignals::received, qApp, [] { QApplication::exit(); });
}

int TarnlyMacApp::run() {
    delegate_.applicationDidFinishLaunching();
    const int status = QApplication::exec();
    delegate_.applicationWillTerminate();
    return status;
}

} // namespace tarnly
