#include "TarnlyApp/Desktop/QuitSignals.hpp"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace tarnly {
namespace {

sigset_t quitSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

int openSignals() {
    const auto set = quitSignals();
    return ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

void QuitSignals::block() {
    const auto set = quitSignals();
    ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGHUP, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

bool QuitSignals::wait(std::chrono::milliseconds patience) {
    const auto set = quitSignals();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(patience);
    const timespec limit{seconds.count(), std::chrono::nanoseconds(patience - seconds).count()};
    return ::sigtimedwait(&set, nullptr, &limit) > 0;
}

QuitSignals::QuitSignals() : signals_(openSignals()), notifier_(signals_, QSocketNotifier::Read) {
    connect(&notifier_, &QSocketNotifier::activated, this, &QuitSignals::received);
}

QuitSignals::~QuitSignals() {
    notifier_.setEnabled(false);
    ::close(signals_);
}

} // namespace tarnly
