#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"

namespace tarnly {

/// The runtime as the windows see it: brings its news to the main thread.
///
/// Belongs to the main thread. Must outlive the runtime's network thread.
class RuntimeModel : public QObject {
    Q_OBJECT

  public:
    /// Takes the runtime's `onStatusChange`, `onStageChange` and `onActivity`; to be made before the start.
    explicit RuntimeModel(CompanionRuntime& runtime);

    QString statusText() const { return QString::fromStdString(runtime_.statusText()); }
    std::optional<std::uint16_t> port() const { return runtime_.port(); }

    /// How the companion stands. What changes from second to second is as it was a second ago at most, while
    /// someone watches; the simulator's stage always, and who has come, and whether a recording runs. It
    /// changes once a second at most.
    const CompanionStatus& activity() const { return activity_; }

    /// The activity is asked for again and again only while it is shown to somebody.
    void watchActivity();
    void unwatchActivity();

    /// Ends the connection of a client, by its id; the activity tells when it has gone.
    void disconnectClient(std::int64_t id);

    /// As `CompanionRuntime::doAside`.
    void doAside(std::function<void()> work) { runtime_.doAside(std::move(work)); }

    /// Whether the companion could not start; the status says why.
    bool hasFailed() const { return runtime_.state() == CompanionRuntime::State::failed; }

  signals:
    void statusChanged();
    void activityChanged();

  private:
    void askSoon();
    void askActivity();
    void takeActivity(const CompanionStatus& activity);
    void followTime();

    OnOneThread thread_;
    CompanionRuntime& runtime_;
    CompanionStatus activity_;
    bool isWatched_ = false;
    QTimer timer_;
    QElapsedTimer sinceAsked_;
    /// For what has come up within a second of the last question.
    QTimer later_;
};

} // namespace tarnly
