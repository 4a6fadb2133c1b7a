#include "TarnlyApp/Desktop/TrayWatch.hpp"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

const auto watcherService = u"org.kde.StatusNotifierWatcher"_s;
const auto watcherPath = u"/StatusNotifierWatcher"_s;

/// Of a call that the desktop answers at once unless it hangs.
constexpr int watcherPatience = 1000; // milliseconds

} // namespace

// A watcher alone shows nothing: the host does, and may come later.
bool TrayWatch::hasStatusNotifierHost() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherService << u"IsStatusNotifierHostRegistered"_s;
    const QDBusReply<QDBusVariant> answer =
        QDBusConnection::sessionBus().call(question, QDBus::Block, watcherPatience);
    return answer.isValid() && answer.value().variant().toBool();
}

void TrayWatch::listenForHost() {
    auto bus = QDBusConnection::sessionBus();
    auto* services =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(services, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayWatch::lookForHost);
    for (const auto& change : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        bus.connect(watcherService, watcherPath, watcherService, change, this, SLOT(lookForHost()));
    }
}

} // namespace tarnly
