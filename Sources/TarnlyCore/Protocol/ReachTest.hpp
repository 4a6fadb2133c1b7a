#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// What came of an attempt to reach the companion, in words for people.
struct ReachFinding {
    enum class Outcome { nobodyYet, refused, fine };
    Outcome outcome = Outcome::nobodyYet;
    Phrase text;
    /// What to do; empty where there is nothing to do.
    Phrase cure;
};

/// Tells whether a device gets to this companion: it remembers who had been there before, and looks for
/// somebody new each time that it is shown how the companion stands. A plain value.
class ReachTest {
  public:
    explicit ReachTest(const CompanionStatus& before) : before_(before.visitors) {}

    /// One that has paired outweighs one that was refused, and that one who has opened the page.
    ReachFinding look(const CompanionStatus& now) const;

    /// The last word, when the time is over and nobody has come.
    static ReachFinding neverArrived(const CompanionStatus& now);

    /// Before the pages: what to do with them.
    static Phrase instruction();

    /// There is no page: what a device could open is missing. `isListening` tells of the companion.
    static ReachFinding withoutAddress(bool isListening);

    /// What a device is to open, the likelier ones first: "http://192.168.1.20:41234/".
    static std::vector<std::string> pages(const CompanionStatus& now);

  private:
    std::optional<VisitorsStatus> before_;
};

} // namespace tarnly
