#include "TarnlyApp/Desktop/RuntimeModel.hpp"

#include <QMetaObject>
#include <chrono>

#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly {
namespace {

constexpr std::chrono::milliseconds interval{1000};

using UrlOf = std::string (*)(const std::string& address, std::uint16_t port);

std::vector<std::string> urls(std::optional<std::uint16_t> port, UrlOf urlOf) {
    std::vector<std::string> all;
    if (!port) return all;
    for (const auto& address : networkAddresses())
        all.push_back(urlOf(address, *port));
    return all;
}

} // namespace

RuntimeModel::RuntimeModel(CompanionRuntime& runtime) : runtime_(runtime) {
    runtime_.onStatusChange = [this] {
        QMetaObject::invokeMethod(this, &RuntimeModel::statusChanged, Qt::QueuedConnection);
    };
    runtime_.onStageChange = [this] {
        QMetaObject::invokeMethod(this, &RuntimeModel::askSoon, Qt::QueuedConnection);
    };
    runtime_.onActivity = runtime_.onStageChange;
    connect(this, &RuntimeModel::statusChanged, this, &RuntimeModel::askSoon);
    later_.setSingleShot(true);
    connect(&later_, &QTimer::timeout, this, &RuntimeModel::askActivity);
    timer_.setInterval(interval);
    connect(&timer_, &QTimer::timeout, this, &RuntimeModel::askActivity);
}

std::vector<std::string> RuntimeModel::addresses() const { return urls(port(), webSocketUrl); }

std::vector<std::string> RuntimeModel::peoplesAddresses() const {
    return hasLessonPage() ? urls(port(), webPageUrl) : addresses();
}

void RuntimeModel::watchActivity(const QObject* watcher) {
    thread_.check();
    watchers_.insert(watcher);
    runtime_.setStatusShown(true);
    askActivity();
    followTime();
}

void RuntimeModel::unwatchActivity(const QObject* watcher) {
    thread_.check();
    if (watchers_.erase(watcher) == 0 || !watchers_.empty()) return;
    runtime_.setStatusShown(false);
    followTime();
}

/// A simulator that is silent is so for longer every second, and the tray icon tells it.
void RuntimeModel::followTime() {
    const bool isSilent = activity_.stage && activity_.stage->silentSeconds;
    const bool isNeeded = !watchers_.empty() || isSilent;
    if (isNeeded == timer_.isActive()) return;
    isNeeded ? timer_.start() : timer_.stop();
}

void RuntimeModel::disconnectClient(std::int64_t id) {
    thread_.check();
    runtime_.disconnectClient(id);
    askSoon();
}

/// Strangers must not keep the windows busy.
void RuntimeModel::askSoon() {
    thread_.check();
    if (later_.isActive()) return;
    const std::chrono::milliseconds passed(sinceAsked_.isValid() ? sinceAsked_.elapsed() : interval.count());
    passed < interval ? later_.start(interval - passed) : askActivity();
}

void RuntimeModel::askActivity() {
    thread_.check();
    later_.stop();
    sinceAsked_.start();
    askAfresh([](const CompanionStatus&) {});
}

void RuntimeModel::askAfresh(std::function<void(const CompanionStatus& status)> take) {
    thread_.check();
    runtime_.askStatus([this, take = std::move(take)](const CompanionStatus& status) {
        const auto bring = [this, take, status] {
            takeActivity(status);
            take(status);
        };
        QMetaObject::invokeMethod(this, bring, Qt::QueuedConnection);
    });
}

void RuntimeModel::takeActivity(const CompanionStatus& activity) {
    thread_.check();
    if (activity == activity_) return;
    activity_ = activity;
    followTime();
    emit activityChanged();
}

} // namespace tarnly
