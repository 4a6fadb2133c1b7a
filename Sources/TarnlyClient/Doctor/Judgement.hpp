#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Doctor/Finding.hpp"
#include "TarnlyCore/Flight/SimulatorStage.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Dnssd/ServiceBrowser.hpp"

/// What the doctor makes of what it has seen: words, without a look at the world. Each answers with the
/// finding of one step.
namespace tarnly::client {

/// An answer to the request for a page, or why there was none.
struct PageProbe {
    /// Where it was asked for: "192.168.1.20:41234".
    std::string place;
    /// Absent: there was no answer.
    std::optional<unsigned> status;
    bool isOurs = false;
    std::string failure;
};

/// What the simulator itself says.
struct SimulatorProbe {
    /// "127.0.0.1:8086"
    std::string place;
    SimulatorStage stage;
    /// Empty where it is not told.
    std::string version;
};

/// A value by way of the companion.
struct ValueProbe {
    bool isPaired = false;
    bool hasValue = false;
    /// Of the step that failed.
    std::string failure;
};

/// A file or folder of the person's. Of a mount that hangs nothing is known.
struct FolderProbe {
    std::filesystem::path path;
    bool isAnswered = false;
    /// Empty where it can be used.
    std::string failure;
    /// Of the folder's files those that are meant.
    std::size_t count = 0;
    /// In bytes.
    std::uint64_t freeSpace = 0;
};

Finding judgeWarnings(const CompanionStatus& status);

/// `found`: absent where there is no DNS-SD daemon to ask, for the reason `failure`.
Finding judgePublication(const CompanionStatus& status, const std::optional<std::vector<FoundService>>& found,
                         const std::string& failure);

Finding judgePage(const PageProbe& page);

/// Where there is no address to try.
Finding judgeNoAddress();

Finding judgePairing(const CompanionStatus& status);

Finding judgeSimulator(const SimulatorProbe& simulator);

/// `hasPassword`: one was given, or found.
Finding judgeValues(const ValueProbe& value, bool hasPassword);

/// Of saved situations.
Finding judgeSituations(const std::optional<FolderProbe>& folder);

/// `sources` as the companion tells them.
Finding judgeNavDatabase(const std::optional<FolderProbe>& file, const std::optional<SourcesStatus>& sources);

/// Of the data folder.
Finding judgeDisk(const FolderProbe& folder);

Finding judgeSettings(const FolderProbe& file);

} // namespace tarnly::client
