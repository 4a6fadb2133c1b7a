#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <optional>

#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// The runtime as the windows see it: brings its news to the main thread.
///
/// Belongs to the main thread. Must outlive the runtime's network thread.
class RuntimeModel : public QObject {
    Q_OBJECT

  public:
    /// Takes the runtime's `onStatusChange` and `onStageChange`; to be made before the start.
    explicit RuntimeModel(CompanionRuntime& runtime);

    QString statusText() const { return QString::fromStdString(runtime_.statusText()); }
    std::optional<std::uint16_t> port() const { return runtime_.port(); }

    /// How the companion stands. What changes from second to second is as it was a second ago at most, while
    /// someone watches; the simulator's stage always.
    const CompanionStatus& activity() const { return activity_; }

    /// The activity is asked for again and again only while it is shown to somebody.
    void watchActivity();
    void unwatchActivity();

  signals:
    void statusChanged();
    void activityChanged();

  private:
    void askActivity();
    void takeActivity(const CompanionStatus& activity);
    void followTime();

    OnOneThread thread_;
    CompanionRuntime& runtime_;
    CompanionStatus activity_;
    bool isWatched_ = false;
    QTimer timer_;
};

} // namespace tarnly
