#include "TarnlyApp/Desktop/TrayWatch.hpp"

#include <chrono>
#include <utility>

namespace tarnly {

TrayWatch::TrayWatch() {
    listenForHost();
    if (canHaveXembedTray()) {
        timer_.setInterval(std::chrono::seconds(2));
        connect(&timer_, &QTimer::timeout, this, &TrayWatch::look);
        timer_.start();
    }
    lookForHost();
}

void TrayWatch::lookForHost() {
    hasHost_ = hasStatusNotifierHost();
    look();
}

void TrayWatch::look() {
    const auto kind = presentKind();
    if (decidedKind_ == Kind::none) decidedKind_ = kind;
    if (decidedKind_ == Kind::statusNotifier) timer_.stop(); // the host tells all news
    auto colour = kind == Kind::xembed ? xembedSymbolColour() : std::nullopt;
    const bool isOtherColour = colour != std::exchange(symbolColour_, colour);
    const bool wasAvailable = std::exchange(isAvailable_, kind != Kind::none);
    if (isAvailable_ != wasAvailable) emit availabilityChanged();
    if (isOtherColour) emit symbolColourChanged();
}

TrayWatch::Kind TrayWatch::presentKind() const {
    if (decidedKind_ != Kind::xembed && hasHost_) return Kind::statusNotifier;
    if (decidedKind_ == Kind::statusNotifier || !canHaveXembedTray()) return Kind::none;
    return hasXembedTray() ? Kind::xembed : Kind::none;
}

} // namespace tarnly
