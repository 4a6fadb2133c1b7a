#pragma once

#include <functional>
#include <string>
#include <vector>

#include "TarnlyCore/CompanionHost.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"

namespace tarnly {

/// Collects how the companion stands. Belongs to the network thread.
class StatusReporter {
  public:
    struct Facts {
        /// Absolute.
        std::string dataFolder;
        /// The line that the program prints. Safe from any thread.
        std::function<Phrase()> words;
        /// What else is not as it should be, in whole sentences.
        std::function<std::vector<Phrase>()> warnings;
        /// What the companion draws upon; may be empty.
        std::function<SourcesStatus()> sources{};
    };

    /// What is given outlives the reporter.
    StatusReporter(CompanionHost& host, const SimBackend& backend, const Clock& clock, Facts facts);

    /// How it stands just now, but for the addresses: to ask the system for these may take its time.
    CompanionStatus collect() const;

  private:
    CompanionHost& host_;
    const SimBackend& backend_;
    const Clock& clock_;
    const Facts facts_;
};

/// The status of a companion that does not run, because it has ended or never began.
CompanionStatus endedStatus(Phrase words, std::string dataFolder);

/// With the addresses that the computer has now, as JSON without a line feed. From any thread.
std::string statusJson(CompanionStatus status);

} // namespace tarnly
