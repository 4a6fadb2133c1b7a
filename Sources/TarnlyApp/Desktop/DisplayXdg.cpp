#include "TarnlyApp/Desktop/Display.hpp"

#include <QRegularExpression>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

// The desktop hands it over in the environment, and Qt looks for it there.
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";

} // namespace

bool hasDisplay() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

// The same display may be ":0", ":0.0" and "unix:0".
QString displayName() {
    static const QRegularExpression variation(u"^unix(?=:)|(?<=\\d)\\.\\d+$"_s);
    auto display = qEnvironmentVariable("DISPLAY", qEnvironmentVariable("WAYLAND_DISPLAY"));
    display.remove(variation);
    for (auto& character : display) {
        if (!character.isLetterOrNumber()) character = u'-';
    }
    return display;
}

QByteArray activationToken() { return qgetenv(tokenVariable); }

void useActivationToken(const QByteArray& token) { qputenv(tokenVariable, token); }

} // namespace tarnly
