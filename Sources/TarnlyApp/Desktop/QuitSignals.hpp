#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace tarnly {

/// Turns SIGINT and SIGTERM into events of the main thread.
class QuitSignals : public QObject {
    Q_OBJECT

  public:
    /// Must be called before any thread is made: threads inherit what is blocked.
    static void block();

    QuitSignals();
    ~QuitSignals() override;

  signals:
    void received();

  private:
    const int signals_; // a file descriptor, its own
    QSocketNotifier notifier_;
};

} // namespace tarnly
