#include "TarnlyApp/Desktop/CompanionThread.hpp"

#include <memory>
#include <stdexcept>

namespace tarnly {
namespace {

/// Absent where the system does not tell where it would be, for example for a person without a home folder.
std::unique_ptr<LoginItem> loginItem(const CompanionOptions& options) {
    try {
        return makeLoginItem(options);
    } catch (const std::runtime_error&) {
        return nullptr;
    }
}

} // namespace

CompanionThread::CompanionThread(const CompanionOptions& options)
    : settingsStore_(AppSettings::fileIn(dataFolder(options)), loginItem(options)),
      runtime_(settingsStore_, options) {}

CompanionThread::~CompanionThread() { stop(); }

void CompanionThread::start() {
    thread_.check();
    runtime_.start();
    network_ = std::thread([this] { runtime_.run(); });
}

void CompanionThread::stop() {
    thread_.check();
    if (!network_.joinable()) return;
    runtime_.end();
    network_.join();
}

} // namespace tarnly
