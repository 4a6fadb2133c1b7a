#include "TarnlyApp/Desktop/DesktopApplication.hpp"

#include <QApplication>
#include <QScopeGuard>

#include "TarnlyApp/Desktop/Windows.hpp"

namespace tarnly {

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
    // The companion calls `runtime_`, which goes before it.
    const auto ending = qScopeGuard([this] { delegate_.applicationWillTerminate(); });
    delegate_.applicationDidFinishLaunching();
    return QApplication::exec();
}

void TarnlyMacApp::showPanel(const QByteArray& activationToken) {
    // Qt looks there for the leave to bring up a window.
    if (!activationToken.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", activationToken);
    menuBarExtra_.showPanel();
}

} // namespace tarnly
