#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// What the person at the computer is told without having asked.
struct Notice {
    Phrase title;
    /// Whole sentences, with the cure.
    Phrase text;

    bool operator==(const Notice&) const = default;
};

/// Decides what of the companion's news is worth a word to the person: a device that pairs for the first
/// time, a password that was refused, a recording that cannot be written. Says each once, and of refusals one
/// a minute, whoever knocks and however often.
///
/// Belongs to the thread of the windows.
class Notices {
  public:
    /// Between two words on refusals.
    static constexpr std::chrono::minutes pauseOfRefusals{1};
    /// So many devices are given to the next start, those that were here last.
    static constexpr std::size_t mostKnown = 64;
    /// So many are told from each other in one run; those beyond are not told of.
    static constexpr std::size_t mostInARun = 4096;

    /// `known` are the devices that have paired before, the last one behind. `clock` outlives this.
    explicit Notices(const Clock& clock, std::vector<std::string> known = {})
        : clock_(clock), known_(std::move(known)) {}

    /// What is news in how the companion stands now.
    std::vector<Notice> newIn(const CompanionStatus& status);

    /// To be given to the next start: an address each, of IPv6 that of its network, as devices change the
    /// rest of theirs.
    std::vector<std::string> known() const;

  private:
    std::optional<Notice> ofPairings(const CompanionStatus& status);
    std::optional<Notice> ofRefusals(const CompanionStatus& status);
    std::optional<Notice> ofRecording(const CompanionStatus& status);
    bool isNew(const std::string& address);

    const Clock& clock_;
    OnOneThread thread_;
    std::vector<std::string> known_;
    std::int64_t refusalsTold_ = 0;
    std::optional<Clock::TimePoint> refusalToldAt_;
    /// Of the recording that runs.
    std::string recording_;
    std::set<std::string> problemsTold_;
};

} // namespace tarnly
