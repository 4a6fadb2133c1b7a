#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <chrono>

namespace tarnly {

/// Turns SIGINT and SIGTERM into events of the main thread. The end of a terminal, or of who reads what the
/// program prints, ends it no more: both may go with the display, in the middle of a lesson.
class QuitSignals : public QObject {
    Q_OBJECT

  public:
    /// Must be called before any thread is made: threads inherit what is blocked.
    static void block();

    /// Waits for one of them, for `patience` at most, while no events are delivered; says whether it came.
    static bool wait(std::chrono::milliseconds patience);

    QuitSignals();
    ~QuitSignals() override;

  signals:
    void received();

  private:
    const int signals_; // a file descriptor, its own
    QSocketNotifier notifier_;
};

} // namespace tarnly
