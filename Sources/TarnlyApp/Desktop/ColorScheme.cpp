#include "TarnlyApp/Desktop/ColorScheme.hpp"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

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

bool isLight(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() > palette.color(QPalette::WindowText).lightness();
}

/// The portal's older call wraps the value twice.
unsigned schemeIn(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

} // namespace

QPalette darkPalette() {
    const QColor window(0x2a, 0x2a, 0x2e);
    const QColor text(0xee, 0xee, 0xec);
    const QColor faintText(0x8c, 0x8c, 0x90);
    QPalette palette(text, QColor(0x3c, 0x3c, 0x42), QColor(0x5a, 0x5a, 0x60), QColor(0x1c, 0x1c, 0x1e),
                     QColor(0x4a, 0x4a, 0x50), text, Qt::white, QColor(0x1e, 0x1e, 0x20), window);
    palette.setColor(QPalette::Highlight, QColor(0x35, 0x84, 0xe4));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, faintText);
    palette.setColor(QPalette::ToolTipBase, window);
    palette.setColor(QPalette::ToolTipText, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faintText);
    }
    return palette;
}

QPalette darkCheckBoxPalette() {
    QPalette palette = darkPalette();
    palette.setColor(QPalette::Base, QColor(0x7c, 0x7c, 0x82));
    return palette;
}

ColorScheme::ColorScheme() {
    qRegisterMetaType<QDBusVariant>(); // the slot's types are looked up by name
    QDBusConnection::sessionBus().connect(portalService, portalPath, settingsInterface, u"SettingChanged"_s,
                                          this, SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask();
}

void ColorScheme::ask() {
    auto question = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, u"Read"_s);
    question << appearanceSpace << schemeKey;
    auto* answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QVariant> reply = *answer;
        if (reply.isValid()) adopt(schemeIn(reply.value()) == dark);
    });
}

void ColorScheme::settingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
    if (space == appearanceSpace && key == schemeKey) adopt(schemeIn(value.variant()) == dark);
}

// A desktop whose colours Qt knows has made the palette dark already.
void ColorScheme::adopt(bool isDark) {
    if (isDark == isOurs_ || (isDark && !isLight(QApplication::palette()))) return;
    isOurs_ = isDark;
    QApplication::setPalette(isDark ? darkPalette() : QPalette()); // an empty one is the desktop's
    QApplication::setPalette(isDark ? darkCheckBoxPalette() : QPalette(), "QCheckBox");
}

} // namespace tarnly
