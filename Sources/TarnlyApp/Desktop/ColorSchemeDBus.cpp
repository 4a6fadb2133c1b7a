#include "TarnlyApp/Desktop/ColorScheme.hpp"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QString>
#include <utility>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

// The XDG desktop portal's settings: 0 is no preference, 1 dark, 2 light.
const auto portalService = u"org.freedesktop.portal.Desktop"_s;
const auto portalPath = u"/org/freedesktop/portal/desktop"_s;
const auto settingsInterface = u"org.freedesktop.portal.Settings"_s;
const auto appearanceSpace = u"org.freedesktop.appearance"_s;
const auto schemeKey = u"color-scheme"_s;
constexpr unsigned dark = 1;

/// The portal's older call wraps the value twice.
unsigned schemeIn(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

/// Some desktops tell the wish through their settings portal only, as GNOME does. It is asked once, and
/// listened to from then on; there need not be one.
class SettingsPortal : public QObject {
    Q_OBJECT

  public:
    explicit SettingsPortal(std::function<void(bool isDark)> tell) : tell_(std::move(tell)) {
        qRegisterMetaType<QDBusVariant>(); // the slot's types are looked up by name
        QDBusConnection::sessionBus().connect(portalService, portalPath, settingsInterface,
                                              u"SettingChanged"_s, this,
                                              SLOT(settingChanged(QString, QString, QDBusVariant)));
        ask();
    }

  private slots:
    void settingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
        if (space == appearanceSpace && key == schemeKey) tell_(schemeIn(value.variant()) == dark);
    }

  private:
    void ask() {
        auto question =
            QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, u"Read"_s);
        question << appearanceSpace << schemeKey;
        auto* answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
            answer->deleteLater();
            const QDBusPendingReply<QVariant> reply = *answer;
            if (reply.isValid()) tell_(schemeIn(reply.value()) == dark);
        });
    }

    const std::function<void(bool isDark)> tell_;
};

} // namespace

std::unique_ptr<QObject> watchWishForDark(std::function<void(bool isDark)> tell) {
    return std::make_unique<SettingsPortal>(std::move(tell));
}

} // namespace tarnly

#include "ColorSchemeDBus.moc"
