#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "TarnlyApp/CompanionRuntime.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"
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

    QString statusText() const { return inWords(runtime_.statusText()); }
    std::optional<std::uint16_t> port() const { return runtime_.port(); }

    /// As clients enter them, while it listens: "ws://192.168.1.20:41234". Asks the system.
    std::vector<std::string> addresses() const;

    bool hasLessonPage() const { return runtime_.hasLessonPage(); }

    /// What people scan, open or enter: the lesson page's "http://192.168.1.20:41234/" where it is served,
    /// else the `addresses`. Asks the system.
    std::vector<std::string> peoplesAddresses() const;

    /// How the companion stands. What changes from second to second is as it was a second ago at most, while
    /// someone watches; the simulator's stage always, and who has come, and whether a recording runs. It
    /// changes once a second at most.
    const CompanionStatus& activity() const { return activity_; }

    /// The activity is asked for again and again only while some watcher shows it to somebody. Harmless when
    /// repeated.
    void watchActivity(const QObject* watcher);
    void unwatchActivity(const QObject* watcher);

    /// Has `take` called on the main thread with how it stands from now on, unless the companion does not
    /// run.
    void askAfresh(std::function<void(const CompanionStatus& status)> take);

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
    std::set<const QObject*> watchers_;
    QTimer timer_;
    QElapsedTimer sinceAsked_;
    /// For what has come up within a second of the last question.
    QTimer later_;
};

} // namespace tarnly
