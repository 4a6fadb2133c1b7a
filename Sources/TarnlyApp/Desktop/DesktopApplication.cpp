#include "TarnlyApp/Desktop/DesktopApplication.hpp"

#include <QApplication>
#include <QScopeGuard>

#include "TarnlyApp/Desktop/Display.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"

namespace tarnly {

DesktopApplication::DesktopApplication(const CompanionOptions& options)
    : companion_(options),
      runtime_(companion_.runtime()),
      panel_(runtime_),
      addresses_(runtime_),
      settings_(companion_.settingsStore()),
      trayIcon_(panel_, runtime_, options.startsInBackground) {
    connect(&panel_, &Panel::addressesRequested, this, [this] { bringUp(addresses_); });
    connect(&panel_, &Panel::settingsRequested, this, [this] { bringUp(settings_); });
    // `quit` would ask the windows first.
    connect(&panel_, &Panel::quitRequested, qApp, [] { QApplication::exit(); });
    connect(&quitSignals_, &QuitSignals::received, qApp, [] { QApplication::exit(); });
}

int DesktopApplication::run() {
    thread_.check();
    // The companion calls `runtime_`, which goes before it.
    const auto ending = qScopeGuard([this] { companion_.stop(); });
    QApplication::setQuitOnLastWindowClosed(false);
    companion_.start();
    return QApplication::exec();
}

void DesktopApplication::showPanel(const QByteArray& activationToken) {
    thread_.check();
    if (!activationToken.isEmpty()) useActivationToken(activationToken);
    trayIcon_.showPanel();
}

} // namespace tarnly
