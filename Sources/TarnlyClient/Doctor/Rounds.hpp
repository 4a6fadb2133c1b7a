#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyClient/Companion/CompanionFinder.hpp"
#include "TarnlyClient/Doctor/Finding.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly::client {

/// The doctor's rounds, from the outside in: each step is told as soon as it is known, and nothing that a
/// step finds keeps the later ones from being taken.
///
/// Used once, on one thread; blocks for little more than 16 times `unit`.
class Rounds {
  public:
    struct Options {
        /// Which companion, where it is not the one of `dataFolder` on this computer.
        CompanionSearch companion;
        std::filesystem::path dataFolder;
        /// Absent: the one in the settings.
        std::optional<std::string> password;
        /// Absent: where the companion looks for it.
        std::optional<std::string> simulatorHost;
        std::optional<std::uint16_t> simulatorPort;
        /// For what usually takes no time.
        std::chrono::milliseconds unit{1000};
    };

    using Tell = std::function<void(const Finding&)>;

    Rounds(Options options, Tell tell) : options_(std::move(options)), tell_(std::move(tell)) {}

    /// How many steps have found something amiss.
    int walk();

  private:
    bool isElsewhere() const { return options_.companion.host || options_.companion.instance; }
    void add(const Finding& finding);
    void lookAtCompanion();
    void lookAround();
    void lookAtPlaces();
    void lookAtSimulator();
    void lookAtValues();
    void lookAtFiles();

    const Options options_;
    const Tell tell_;
    int amiss_ = 0;
    /// Of the companion on this computer, where it answers.
    std::optional<CompanionStatus> status_;
    /// Where the companion can be talked with.
    std::optional<Endpoint> companion_;
    bool isSimulatorReady_ = true;
};

/// What the companion with this data folder tells. Throws `StatusQueryError`, and `ClientError` when that is
/// not understood.
CompanionStatus askForWholeStatus(const std::filesystem::path& dataFolder, std::chrono::milliseconds limit);

} // namespace tarnly::client
