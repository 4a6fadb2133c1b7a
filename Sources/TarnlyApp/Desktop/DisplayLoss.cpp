#include "TarnlyApp/Desktop/DisplayLoss.hpp"

#include <QCoreApplication>
#include <QString>
#include <QThread>
#include <atomic>
#include <cstdlib>
#include <utility>

namespace tarnly {
namespace {

using namespace Qt::StringLiterals;

std::atomic<DisplayLoss*> present = nullptr;
/// Whether the main thread has heard of the loss, and holds the program.
std::atomic<bool> isHeld = false;
QtMessageHandler previousHandler = nullptr;

/// Qt's last words, for X11 and for Wayland. After the one it calls `exit`, after the other `_exit`, of which
/// nobody else is told.
bool isLastWord(const QString& message) {
    return message.startsWith(u"The X11 connection broke"_s) ||
           message.startsWith(u"The Wayland connection broke"_s) ||
           message.startsWith(u"The Wayland connection experienced a fatal error"_s);
}

bool isOnMainThread() {
    const auto* application = QCoreApplication::instance();
    return application != nullptr && QThread::currentThread() == application->thread();
}

/// Wayland has threads that read what comes. Each that hears of the loss would end the program, also one that
/// hears of it when the main thread has already.
[[noreturn]] void leaveItToMainThread() {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [] {
            DisplayLoss::notice();
            std::_Exit(EXIT_FAILURE);
        },
        Qt::QueuedConnection);
    for (;;)
        QThread::sleep(1000);
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (previousHandler != nullptr) previousHandler(type, context, message);
    if ((present == nullptr && !isHeld) || !isLastWord(message)) return;
    isOnMainThread() ? DisplayLoss::notice() : leaveItToMainThread();
}

} // namespace

DisplayLoss::DisplayLoss(std::function<void()> beforeEnd) : beforeEnd_(std::move(beforeEnd)) {
    thread_.check();
    isHeld = false;
    present = this;
    previousHandler = qInstallMessageHandler(handleMessage);
    // Xlib's own handler says nothing to Qt.
    [[maybe_unused]] static const int registered = std::atexit(notice);
}

DisplayLoss::~DisplayLoss() {
    thread_.check();
    qInstallMessageHandler(previousHandler);
    present = nullptr;
    isHeld = false;
}

void DisplayLoss::notice() {
    if (present != nullptr) isHeld = true; // before nobody is present
    auto* const loss = present.exchange(nullptr);
    if (loss != nullptr) loss->beforeEnd_();
}

} // namespace tarnly
