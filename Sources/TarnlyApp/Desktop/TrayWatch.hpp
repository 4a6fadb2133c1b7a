#pragma once

#include <QObject>
#include <QTimer>

namespace tarnly {

/// Watches whether the desktop shows tray icons. At login its panel may come after us, and it may be started
/// anew at any time.
class TrayWatch : public QObject {
    Q_OBJECT

  public:
    TrayWatch();

    bool isAvailable() const { return isAvailable_; }

  signals:
    void availabilityChanged();

  private slots:
    void look();

  private:
    bool findTray();

    bool isAvailable_ = false;
    /// Qt decides for good between D-Bus and X11 when it is first asked.
    bool hasAskedQt_ = false;
    QTimer timer_;
};

} // namespace tarnly
