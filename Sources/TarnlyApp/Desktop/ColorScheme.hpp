#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QPalette>
#include <QString>

namespace tarnly {

/// Follows the person's wish for a dark desktop where Qt itself does not: on desktops that tell it through
/// their settings portal only, as GNOME does.
class ColorScheme : public QObject {
    Q_OBJECT

  public:
    /// Asks the portal, and listens to it from then on; there need not be one.
    ColorScheme();

  private slots:
    void settingChanged(const QString& space, const QString& key, const QDBusVariant& value);

  private:
    void ask();
    void adopt(bool isDark);

    /// Whether the palette in force is ours.
    bool isOurs_ = false;
};

/// Light texts on dark surfaces.
QPalette darkPalette();

/// The dark palette, with a box that can be told from the surface that it stands on also while it is empty.
QPalette darkCheckBoxPalette();

} // namespace tarnly
