#include "TarnlyApp/Desktop/DesktopApplication.hpp"

#include <QApplication>
#include <QDesktopServices>
#include <QScopeGuard>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <utility>

#include "TarnlyApp/Desktop/Display.hpp"
#include "TarnlyApp/Desktop/WindowParts.hpp"
#include "TarnlyApp/Desktop/Wording.hpp"

namespace tarnly {
namespace {

// How long nobody needs the companion before it ends without a display.
constexpr std::chrono::seconds quitLookInterval{1};
constexpr int looksBeforeEnd = 5;

void remark(const char* text) { std::cerr << "Tarnly: " << text << std::endl; }

} // namespace

DesktopApplication::DesktopApplication(const CompanionOptions& options, EndWatch& endWatch)
    : endWatch_(endWatch),
      dataFolder_(std::filesystem::absolute(dataFolder(options))),
      startsInBackground_(options.startsInBackground),
      companion_(options),
      memory_(DeskMemory::in(dataFolder_)),
      notices_(clock_, memory_.knownDevices),
      runtime_(companion_.runtime()),
      memoryKeeper_(dataFolder_, [this](auto work) { runtime_.doAside(std::move(work)); }),
      panel_(runtime_),
      addresses_(runtime_),
      reach_(runtime_),
      settings_(companion_.settingsStore(), options),
      trayIcon_(panel_, runtime_, options.startsInBackground),
      displayLoss_([this] { finishLesson(); }) {
    connect(&panel_, &Panel::addressesRequested, this, [this] { bringUp(addresses_); });
    connect(&panel_, &Panel::reachTestRequested, this, [this] { bringUp(reach_); });
    connect(&panel_, &Panel::settingsRequested, this, [this] { bringUp(settings_); });
    connect(&panel_, &Panel::pageRequested, this, [](const QUrl& page) { QDesktopServices::openUrl(page); });
    connect(&runtime_, &RuntimeModel::activityChanged, this, &DesktopApplication::tellNews);
    // `quit` would ask the windows first.
    connect(&panel_, &Panel::quitRequested, qApp, [] { QApplication::exit(); });
    connect(&quitSignals_, &QuitSignals::received, qApp, [] { QApplication::exit(); });
}

int DesktopApplication::run() {
    thread_.check();
    // The companion calls `runtime_`, which goes before it.
    const auto ending = qScopeGuard([this] {
        settings_.commit();
        endWatch_.expectEnd(EndWatch::longest, EXIT_SUCCESS);
        companion_.stop();
    });
    QApplication::setQuitOnLastWindowClosed(false);
    companion_.start();
    if (!memory_.isIntroduced && !startsInBackground_) introduce();
    return QApplication::exec();
}

void DesktopApplication::introduce() {
    trayIcon_.introduce();
    memory_.isIntroduced = true;
    remember();
}

void DesktopApplication::tellNews() {
    const auto notices = notices_.newIn(runtime_.activity());
    for (const auto& notice : notices)
        trayIcon_.tell(inWords(notice.title), inWords(notice.text));
    // What is kept back meanwhile is told then, though nothing else may happen.
    constexpr auto soonAfter =
        Notices::pauseOfRefusals + std::chrono::seconds(5); // the timer is a coarse one
    if (!notices.empty()) QTimer::singleShot(soonAfter, this, &DesktopApplication::tellNews);
    auto known = notices_.known();
    if (std::ranges::is_permutation(known, memory_.knownDevices)) return; // only who was here last
    memory_.knownDevices = std::move(known);
    remember();
}

/// Beside the windows, which do not wait for a disk.
void DesktopApplication::remember() { memoryKeeper_.keep(memory_); }

/// The display has gone: the companion does not need it. A client whose connection breaks comes back.
void DesktopApplication::finishLesson() {
    if (companion_.isInUse()) {
        remark(
            "the display has gone; the companion goes on without windows, until no client is paired and no "
            "recording runs");
        companion_.runtime().setStatusShown(false);
        for (int looks = 0; looks < looksBeforeEnd && !QuitSignals::wait(quitLookInterval);) {
            looks = companion_.isInUse() ? 0 : looks + 1;
        }
    }
    endWatch_.expectEnd(EndWatch::longest, EXIT_FAILURE);
    companion_.stop();
    remark("the display has gone, and the companion has ended");
    // All that is whole is on the disk. What stands further down on this stack must not be used any more,
    // which the destructors of libraries, at an ordinary exit, do not know.
    std::_Exit(EXIT_FAILURE);
}

void DesktopApplication::showPanel(const QByteArray& activationToken) {
    thread_.check();
    if (!activationToken.isEmpty()) useActivationToken(activationToken);
    trayIcon_.showPanel();
}

} // namespace tarnly
