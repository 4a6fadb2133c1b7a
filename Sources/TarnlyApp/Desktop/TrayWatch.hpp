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
    void lookForHost();
    void look();

  private:
    /// The two kinds of trays. Qt decides for one of them when it first makes an icon, and stays with it.
    enum class Kind { none, statusNotifier, xembed };

    Kind presentKind() const;

    /// Whether there is a status notifier host, as it last told.
    bool hasHost_ = false;
    Kind decidedKind_ = Kind::none;
    bool isAvailable_ = false;
    QTimer timer_;
};

} // namespace tarnly
