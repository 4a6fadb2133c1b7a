#include "TarnlyApp/Desktop/TrayWatch.hpp"

#include <xcb/xcb.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

const auto watcherService = u"org.kde.StatusNotifierWatcher"_s;
const auto watcherPath = u"/StatusNotifierWatcher"_s;

/// Of a call that the desktop answers at once unless it hangs.
constexpr int answerPatience = 1000; // milliseconds

/// A watcher alone shows nothing: the host does, and may come later.
bool hasStatusNotifierHost() {
    auto question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcherService << u"IsStatusNotifierHostRegistered"_s;
    const QDBusReply<QDBusVariant> answer =
        QDBusConnection::sessionBus().call(question, QDBus::Block, answerPatience);
    return answer.isValid() && answer.value().variant().toBool();
}

xcb_connection_t* x11Connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

/// Whether somebody owns the selection by which trays make themselves known (System Tray Protocol).
bool hasXembedTray(xcb_connection_t* x11) {
    int display = 0;
    int screen = 0;
    char* host = nullptr;
    xcb_parse_display(nullptr, &host, &display, &screen);
    std::free(host);
    const auto name = "_NET_SYSTEM_TRAY_S" + std::to_string(screen);
    const auto asked = xcb_intern_atom(x11, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto atom = owned(xcb_intern_atom_reply(x11, asked, nullptr));
    if (!atom) return false;
    const auto owner =
        owned(xcb_get_selection_owner_reply(x11, xcb_get_selection_owner(x11, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

} // namespace

TrayWatch::TrayWatch() {
    auto bus = QDBusConnection::sessionBus();
    auto* services =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(services, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayWatch::lookForHost);
    for (const auto& change : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s}) {
        bus.connect(watcherService, watcherPath, watcherService, change, this, SLOT(lookForHost()));
    }
    if (x11Connection() != nullptr) {
        timer_.setInterval(std::chrono::seconds(2));
        connect(&timer_, &QTimer::timeout, this, &TrayWatch::look);
        timer_.start();
    }
    lookForHost();
}

void TrayWatch::lookForHost() {
    hasHost_ = hasStatusNotifierHost();
    look();
}

void TrayWatch::look() {
    const auto kind = presentKind();
    if (decidedKind_ == Kind::none) decidedKind_ = kind;
    if (decidedKind_ == Kind::statusNotifier) timer_.stop(); // D-Bus brings all news
    const bool wasAvailable = std::exchange(isAvailable_, kind != Kind::none);
    if (isAvailable_ != wasAvailable) emit availabilityChanged();
}

TrayWatch::Kind TrayWatch::presentKind() const {
    if (decidedKind_ != Kind::xembed && hasHost_) return Kind::statusNotifier;
    if (decidedKind_ == Kind::statusNotifier || x11Connection() == nullptr) return Kind::none;
    return hasXembedTray(x11Connection()) ? Kind::xembed : Kind::none;
}

} // namespace tarnly
