#include "TarnlyApp/Desktop/CompanionThread.hpp"

#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>

#include "TarnlyPlatform/Base/StartThread.hpp"

namespace tarnly {
namespace {

constexpr std::chrono::milliseconds inUsePatience{500};

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
    : claim_(dataFolder(options)),
      settingsStore_(AppSettings::fileIn(dataFolder(options)), loginItem(options)),
      runtime_(settingsStore_, options) {
    if (claim_.problem()) runtime_.warn(*claim_.problem());
}

CompanionThread::~CompanionThread() { stop(); }

void CompanionThread::start() {
    thread_.check();
    runtime_.start();
    network_ = startThread([this] { runtime_.run(); });
}

bool CompanionThread::isInUse() {
    thread_.check();
    if (runtime_.state() != CompanionRuntime::State::listening) return false;
    const auto answer = std::make_shared<std::promise<bool>>();
    auto inUse = answer->get_future();
    runtime_.askStatus([answer](const CompanionStatus& status) {
        answer->set_value(status.clients.paired > 0 || status.recording.has_value());
    });
    return inUse.wait_for(inUsePatience) != std::future_status::ready || inUse.get();
}

void CompanionThread::stop() {
    thread_.check();
    if (!network_.joinable()) return;
    runtime_.end();
    network_.join();
    runtime_.finishRecordings();
    settingsStore_.finishSaving(); // the display's loss destroys nothing
}

} // namespace tarnly
