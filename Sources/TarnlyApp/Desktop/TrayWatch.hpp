#pragma once

#include <QColor>
#include <QObject>
#include <QTimer>
#include <optional>

namespace tarnly {

/// Watches whether the desktop shows tray icons. At login its panel may come after us, and it may be started
/// anew at any time.
class TrayWatch : public QObject {
    Q_OBJECT

  public:
    TrayWatch();

    bool isAvailable() const { return isAvailable_; }

    /// In which the desktop paints the symbols in its tray, where it says so: dark on a light panel, light on
    /// a dark one. Then icons of one colour are what it asks for.
    std::optional<QColor> symbolColour() const { return symbolColour_; }

  signals:
    void availabilityChanged();
    void symbolColourChanged();

  private slots:
    void lookForHost();
    void look();

  private:
    /// The two kinds of trays: a service that tells its news, and a window that has to be looked for. Qt
    /// decides for one of them when it first makes an icon, and stays with it.
    enum class Kind { none, statusNotifier, xembed };

    Kind presentKind() const;

    // What each system has of these kinds

    /// Has `lookForHost` called whenever the host of a status notifier may have come or gone.
    void listenForHost();
    static bool hasStatusNotifierHost();

    static bool canHaveXembedTray();
    static bool hasXembedTray();
    /// That of such a tray.
    static std::optional<QColor> xembedSymbolColour();

    /// Whether there is a status notifier host, as it last told.
    bool hasHost_ = false;
    Kind decidedKind_ = Kind::none;
    bool isAvailable_ = false;
    std::optional<QColor> symbolColour_;
    QTimer timer_;
};

} // namespace tarnly
