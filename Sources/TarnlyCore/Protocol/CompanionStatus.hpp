#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Discovery/Visitors.hpp"
#include "TarnlyCore/Flight/SimulatorStage.hpp"
#include "TarnlyCore/Protocol/ProtocolServer.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyPlatform/Base/Phrase.hpp"
#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"
#include "TarnlyPlatform/Json/JsonPhrase.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// How a companion stands, and the words for it: the panel, the status file and the tools say the same. All
/// of these are plain values; texts are well-formed UTF-8.
namespace tarnly {

struct StageStatus {
    /// As `stageName` has it.
    std::string name;
    Phrase words;
    /// Empty while there is nothing to do.
    Phrase advice;
    std::optional<Phrase> detail;
    std::optional<std::int64_t> silentSeconds;

    static StageStatus of(const SimulatorStage& stage, Clock::TimePoint now);

    bool operator==(const StageStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("name", &StageStatus::name), field("words", &StageStatus::words),
                          field("advice", &StageStatus::advice), field("detail", &StageStatus::detail),
                          field("silent_for_s", &StageStatus::silentSeconds));
    }
};

struct PublicationStatus {
    /// "off", "publishing", "published" or "not_published".
    std::string state;
    /// Under which it is found.
    std::optional<std::string> name;
    /// Why it is not published, and what to do about it.
    std::optional<Phrase> reason;

    /// Absent: nobody is asked to publish.
    static PublicationStatus of(const std::optional<PublicationState>& publication);

    bool operator==(const PublicationStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("state", &PublicationStatus::state), field("name", &PublicationStatus::name),
                          field("reason", &PublicationStatus::reason));
    }
};

/// A paired client.
struct ClientStatus {
    /// By which it can be disconnected.
    std::int64_t id = 0;
    /// Without a port, of IPv6 the first half.
    std::string address;
    /// In UTC: "2026-11-22T03:15:00Z".
    std::string since;
    /// Datarefs.
    std::int64_t subscriptions = 0;

    static ClientStatus of(const PairedClient& client);

    bool operator==(const ClientStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("id", &ClientStatus::id), field("address", &ClientStatus::address),
                          field("since", &ClientStatus::since),
                          field("subscriptions", &ClientStatus::subscriptions));
    }
};

struct ClientsStatus {
    std::int64_t paired = 0;
    /// The paired ones too.
    std::int64_t connected = 0;
    /// The paired ones. Absent while there are none.
    std::optional<std::vector<ClientStatus>> list{};

    static ClientsStatus of(const std::vector<PairedClient>& paired, std::size_t connected);

    bool operator==(const ClientsStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("paired", &ClientsStatus::paired),
                          field("connected", &ClientsStatus::connected), field("list", &ClientsStatus::list));
    }
};

/// Of one kind, from other computers.
struct VisitStatus {
    std::int64_t count = 0;
    /// The last one's moment, "2026-11-22T15:04:05Z", and the address, of IPv6 the first half.
    std::string at;
    std::string from;

    static std::optional<VisitStatus> of(const std::optional<Visitors::Visits>& visits);

    bool operator==(const VisitStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("count", &VisitStatus::count), field("at", &VisitStatus::at),
                          field("from", &VisitStatus::from));
    }
};

struct VisitorsStatus {
    std::optional<VisitStatus> page;
    std::optional<VisitStatus> refused;
    std::optional<VisitStatus> paired;

    /// Absent while there were none.
    static std::optional<VisitorsStatus> of(const Visitors& visitors);

    bool operator==(const VisitorsStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("page", &VisitorsStatus::page), field("refused", &VisitorsStatus::refused),
                          field("paired", &VisitorsStatus::paired));
    }
};

/// What the companion draws upon.
struct SourcesStatus {
    std::string simulatorHost;
    std::int64_t simulatorPort = 0;
    /// A folder and a file; absolute paths.
    std::optional<std::string> situations;
    std::optional<std::string> navDatabase;
    /// Of its data, "2501"; absent where it does not tell.
    std::optional<std::string> navCycle;
    /// Absent but while one is made of the simulator's own data.
    std::optional<bool> isNavDatabaseInTheMaking;

    bool operator==(const SourcesStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("sim_host", &SourcesStatus::simulatorHost),
            field("sim_port", &SourcesStatus::simulatorPort), field("situations", &SourcesStatus::situations),
            field("nav_db", &SourcesStatus::navDatabase), field("nav_db_cycle", &SourcesStatus::navCycle),
            field("nav_db_in_the_making", &SourcesStatus::isNavDatabaseInTheMaking));
    }
};

/// Times in seconds, to the tenth.
struct RecordingStatus {
    /// The log's path; empty where none could be made.
    std::string file;
    std::int64_t samples = 0;
    /// Absent before the first one.
    std::optional<double> lastSampleAgeSeconds;
    double runningSeconds = 0;
    /// Why the log is not being written, and the cure: whole sentences. Absent while all is well.
    std::optional<Phrase> problem;

    static RecordingStatus of(const FlightRecorder::Progress& progress);

    bool operator==(const RecordingStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("file", &RecordingStatus::file), field("samples", &RecordingStatus::samples),
                          field("last_sample_age_s", &RecordingStatus::lastSampleAgeSeconds),
                          field("running_for_s", &RecordingStatus::runningSeconds),
                          field("problem", &RecordingStatus::problem));
    }
};

struct CompanionStatus {
    std::string version;
    bool isRunning = false;
    /// How it can be reached, or why it could not start: the line that it prints.
    Phrase words;
    /// What is not as it should be, and the cure: whole sentences. Absent while all is well.
    std::optional<std::vector<Phrase>> warnings;
    /// Absent until it listens.
    std::optional<std::int64_t> port;
    /// As clients enter them: "ws://192.168.1.20:41234".
    std::vector<std::string> addresses;
    /// This and what follows is absent, or nothing, while it does not run.
    std::optional<PublicationStatus> published;
    std::optional<StageStatus> stage;
    /// "open" or "password".
    std::optional<std::string> pairing;
    std::optional<SourcesStatus> sources;
    std::optional<VisitorsStatus> visitors;
    ClientsStatus clients;
    std::optional<RecordingStatus> recording;
    /// An absolute path.
    std::string dataFolder;

    /// Adds to the warnings.
    void warn(Phrase sentence);

    bool operator==(const CompanionStatus&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("version", &CompanionStatus::version), field("running", &CompanionStatus::isRunning),
            field("words", &CompanionStatus::words), field("warnings", &CompanionStatus::warnings),
            field("port", &CompanionStatus::port), field("addresses", &CompanionStatus::addresses),
            field("published", &CompanionStatus::published), field("stage", &CompanionStatus::stage),
            field("pairing", &CompanionStatus::pairing), field("sources", &CompanionStatus::sources),
            field("visitors", &CompanionStatus::visitors), field("clients", &CompanionStatus::clients),
            field("recording", &CompanionStatus::recording),
            field("data_folder", &CompanionStatus::dataFolder));
    }
};

/// "Simulator: not running. Start X-Plane 12.1.4 or later."
Phrase stageSentences(const StageStatus& stage);

/// `Published by DNS-SD as "rig42 (2)".`, or why not.
Phrase publicationSentence(const PublicationStatus& published);

/// "No client is paired.", "1 client is paired.", "2 clients are paired."
Phrase clientsSentence(const ClientsStatus& clients);

/// "No recording is running.", "Recording for 0:05, no samples yet.", "Recording for 1:00:05.", and why its
/// log is not being written.
Phrase recordingSentence(const std::optional<RecordingStatus>& recording);

/// "1 sample, taken 0.4 s ago.", "240 samples, the last one taken 0.4 s ago."; empty before the first one.
Phrase samplesSentence(const RecordingStatus& recording);

/// What is not as it should be, all in one; empty while all is well.
Phrase warningSentences(const CompanionStatus& status);

/// All of it for people, in English, a line each, without line feeds.
std::vector<std::string> statusLines(const CompanionStatus& status);

} // namespace tarnly
