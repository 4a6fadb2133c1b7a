#include "TarnlyApp/Desktop/RuntimeModel.hpp"

#include <QMetaObject>
#include <chrono>

namespace tarnly {

RuntimeModel::RuntimeModel(CompanionRuntime& runtime) : runtime_(runtime) {
    runtime_.onStatusChange = [this] {
        QMetaObject::invokeMethod(this, &RuntimeModel::statusChanged, Qt::QueuedConnection);
    };
    timer_.setInterval(std::chrono::seconds(1));
    connect(&timer_, &QTimer::timeout, this, &RuntimeModel::askActivity);
}

void RuntimeModel::watchActivity() {
    thread_.check();
    askActivity();
    timer_.start();
}

void RuntimeModel::unwatchActivity() {
    thread_.check();
    timer_.stop();
}

void RuntimeModel::askActivity() {
    thread_.check();
    runtime_.askActivity([this](const CompanionRuntime::Activity& activity) {
        QMetaObject::invokeMethod(
            this, [this, activity] { takeActivity(activity); }, Qt::QueuedConnection);
    });
}

void RuntimeModel::takeActivity(const CompanionRuntime::Activity& activity) {
    thread_.check();
    if (activity == activity_) return;
    activity_ = activity;
    emit activityChanged();
}

} // namespace tarnly
