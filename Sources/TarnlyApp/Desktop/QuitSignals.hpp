#pragma once

#include <QObject>
#include <QSocketNotifier>

#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly {

/// Turns SIGINT and SIGTERM into events of the main thread.
class QuitSignals : public QObject {
    Q_OBJECT

  public:
    /// Must be called before any thread is made: threads inherit what is blocked.
    static void block();

    QuitSignals();

  signals:
    void received();

  private:
    FileDescriptor signals_;
    QSocketNotifier notifier_;
};

} // namespace tarnly
