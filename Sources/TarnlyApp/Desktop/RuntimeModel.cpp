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
    askActivity();
    timer_.start();
}

void RuntimeModel::unwatchActivity() { timer_.stop(); }

void RuntimeModel::askActivity() {
    runtime_.askActivity([this](const CompanionRuntime::Activity& activity) {
        QMetaObject::invokeMethod(
            this, [this, activity] { takeActivity(activity); }, Qt::QueuedConnection);
    });
}

void RuntimeModel::takeActivity(const CompanionRuntime::Activity& activity) {
    if (activity == activity_) return;
    activity_ = activity;
    emit activityChanged();
}

} // namespace tarnly
