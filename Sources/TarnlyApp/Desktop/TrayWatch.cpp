#include "TarnlyApp/Desktop/TrayWatch.hpp"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QGuiApplication>
#include <QSystemTrayIcon>
#include <chrono>
#include <utility>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

const auto statusNotifierService = u"org.kde.StatusNotifierWatcher"_s;

bool hasStatusNotifier() {
    const auto bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface()->isServiceRegistered(statusNotifierService);
}

bool isOnX11() { return QGuiApplication::platformName() == u"xcb"_s; }

} // namespace

TrayWatch::TrayWatch() {
    auto* services = new QDBusServiceWatcher(statusNotifierService, QDBusConnection::sessionBus(),
                                             QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(services, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayWatch::look);
    QDBusConnection::sessionBus().connect(statusNotifierService, u"/StatusNotifierWatcher"_s,
                                          statusNotifierService, u"StatusNotifierHostRegistered"_s, this,
                                          SLOT(look()));
    isAvailable_ = findTray();
    if (isOnX11() && !hasStatusNotifier()) {
        timer_.setInterval(std::chrono::seconds(2));
        connect(&timer_, &QTimer::timeout, this, &TrayWatch::look);
        timer_.start();
    }
}

void TrayWatch::look() {
    const bool wasAvailable = std::exchange(isAvailable_, findTray());
    if (isAvailable_ != wasAvailable) emit availabilityChanged();
}

bool TrayWatch::findTray() {
    if (!hasAskedQt_ && !isOnX11() && !hasStatusNotifier()) return false;
    hasAskedQt_ = true;
    return QSystemTrayIcon::isSystemTrayAvailable();
}

} // namespace tarnly
