#pragma once

#include <chrono>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyCore/Recording/LogInProgress.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"

namespace tarnly {

/// Notices a disk that does not answer: it knows of each call to a log that is under way, and since when.
///
/// Shared by the recorder thread, whose calls these are, and by those who ask. Safe from any thread.
class DiskWatch : public std::enable_shared_from_this<DiskWatch> {
  public:
    /// A call that takes longer than `patience` hangs.
    explicit DiskWatch(std::chrono::nanoseconds patience) : patience_(patience) {}

    /// Opens as `open` does, and keeps an eye on that and on each call of what it has opened.
    LogInProgress::OpenLog watched(LogInProgress::OpenLog open);

    /// The log of a call that hangs; absent while the disk answers.
    std::optional<std::filesystem::path> hanging() const;

    class Sink;
    class Watched;

  private:
    struct Call {
        std::filesystem::path log;
        std::chrono::steady_clock::time_point begun;
    };

    const std::chrono::nanoseconds patience_;
    /// Those under way, the oldest first.
    Guarded<std::list<Call>> calls_;
};

} // namespace tarnly
