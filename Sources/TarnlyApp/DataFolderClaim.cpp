#include "TarnlyApp/DataFolderClaim.hpp"

#include <stdexcept>
#include <thread>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr std::chrono::milliseconds pause(20);

std::string inUse(const std::string& folder, std::optional<std::int64_t> holder) {
    const auto process = holder ? "process " + std::to_string(*holder) : std::string("another process");
    return "the data folder " + folder + " is in use by " + process +
           "; end that companion, or give this one a folder of its own by --data-dir";
}

} // namespace

DataFolderClaim::DataFolderClaim(const std::filesystem::path& folder, std::chrono::milliseconds patience) {
    using Outcome = FolderLock::Outcome;
    const auto shown = printable(std::filesystem::absolute(folder).string());
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        lock_.emplace(folder);
        if (lock_->outcome() != Outcome::heldByAnother) break;
        if (std::chrono::steady_clock::now() >= deadline)
            throw std::runtime_error(inUse(shown, lock_->holder()));
        std::this_thread::sleep_for(pause);
    }
    if (lock_->outcome() == Outcome::taken) return;
    problem_ = Phrase::of(
        "The data folder %1 cannot be locked against a second companion: %2. Make it a folder that you may "
        "write to, or name another by --data-dir.",
        shown, lock_->error().message());
}

} // namespace tarnly
