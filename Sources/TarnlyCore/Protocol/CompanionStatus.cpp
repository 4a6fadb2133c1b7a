#include "TarnlyCore/Protocol/CompanionStatus.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

double tenths(std::chrono::nanoseconds time) { return std::floor(static_cast<double>(time / 100ms)) / 10; }

std::string twoDigits(std::chrono::seconds::rep number) {
    const auto text = std::to_string(number);
    return number < 10 ? "0" + text : text;
}

/// "2026-11-22T15:04:05Z"
std::string utcText(std::chrono::sys_seconds time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    return std::to_string(static_cast<int>(date.year())) + "-" +
           twoDigits(static_cast<unsigned>(date.month())) + "-" +
           twoDigits(static_cast<unsigned>(date.day())) + "T" + twoDigits(clock.hours().count()) + ":" +
           twoDigits(clock.minutes().count()) + ":" + twoDigits(clock.seconds().count()) + "Z";
}

std::string addressesSentence(const std::vector<std::string>& addresses) {
    if (addresses.empty()) return "No address: connect this computer to a network.";
    std::string text = "Addresses:";
    for (const auto& address : addresses)
        text += " " + address;
    return text;
}

} // namespace

StageStatus StageStatus::of(const SimulatorStage& stage, Clock::TimePoint now) {
    StageStatus status;
    status.name = stageName(stage.kind);
    status.words = stageWords(stage, now);
    status.advice = stageAdvice(stage);
    if (!stage.detail.empty()) status.detail = stage.detail;
    if (stage.silentSince) {
        const auto silent = std::max(now - *stage.silentSince, Clock::Duration::zero());
        status.silentSeconds = std::chrono::floor<std::chrono::seconds>(silent).count();
    }
    return status;
}

PublicationStatus PublicationStatus::of(const std::optional<PublicationState>& publication) {
    if (!publication) return {"off", {}, {}};
    switch (publication->kind) {
        case PublicationState::Kind::publishing:
            return {"publishing", {}, {}};
        case PublicationState::Kind::published:
            return {"published", publication->text.text(), {}};
        case PublicationState::Kind::noDaemon:
        case PublicationState::Kind::refused:
            break;
    }
    return {"not_published", {}, publication->text};
}

std::optional<VisitStatus> VisitStatus::of(const std::optional<Visitors::Visits>& visits) {
    if (!visits) return std::nullopt;
    return VisitStatus{visits->count, utcText(visits->lastAt), visits->lastFrom};
}

std::optional<VisitorsStatus> VisitorsStatus::of(const Visitors& visitors) {
    using Kind = Visitors::Kind;
    VisitorsStatus status{VisitStatus::of(visitors.of(Kind::page)),
                          VisitStatus::of(visitors.of(Kind::refused)),
                          VisitStatus::of(visitors.of(Kind::paired))};
    if (status == VisitorsStatus()) return std::nullopt;
    return status;
}

RecordingStatus RecordingStatus::of(const FlightRecorder::Progress& progress) {
    RecordingStatus status;
    status.file = wellFormedUtf8(progress.file);
    status.samples = static_cast<std::int64_t>(progress.samples);
    if (progress.lastSampleAge) status.lastSampleAgeSeconds = tenths(*progress.lastSampleAge);
    status.runningSeconds = tenths(progress.runningFor);
    if (!progress.problem.empty()) status.problem = progress.problem;
    return status;
}

ClientStatus ClientStatus::of(const PairedClient& client) {
    return {client.id, wellFormedUtf8(client.address), utcText(client.since),
            static_cast<std::int64_t>(client.subscriptions)};
}

ClientsStatus ClientsStatus::of(const std::vector<PairedClient>& paired, std::size_t connected) {
    ClientsStatus status;
    status.paired = static_cast<std::int64_t>(paired.size());
    status.connected = static_cast<std::int64_t>(connected);
    if (paired.empty()) return status;
    auto& list = status.list.emplace();
    list.reserve(paired.size());
    for (const auto& client : paired)
        list.push_back(ClientStatus::of(client));
    return status;
}

void CompanionStatus::warn(Phrase sentence) {
    if (!warnings) warnings.emplace();
    warnings->push_back(std::move(sentence));
}

Phrase stageSentences(const StageStatus& stage) {
    return Phrase::joined({Phrase::sentence(stage.words), Phrase::sentence(stage.advice)});
}

Phrase publicationSentence(const PublicationStatus& published) {
    if (published.name) return Phrase::of("Published by DNS-SD as \"%1\".", *published.name);
    if (published.reason) return Phrase::of("Not published by DNS-SD: %1.", *published.reason);
    return published.state == "publishing" ? Phrase::of("Being published by DNS-SD.")
                                           : Phrase::of("Not published by DNS-SD.");
}

Phrase clientsSentence(const ClientsStatus& clients) {
    if (clients.paired == 0) return Phrase::of("No client is paired.");
    return Phrase::counted("%n clients are paired.", "%n client is paired.", clients.paired);
}

Phrase recordingSentence(const std::optional<RecordingStatus>& recording) {
    if (!recording) return Phrase::of("No recording is running.");
    const auto duration = timeText(recording->runningSeconds);
    const auto sentence = recording->samples == 0 ? Phrase::of("Recording for %1, no samples yet.", duration)
                                                  : Phrase::of("Recording for %1.", duration);
    return Phrase::joined({sentence, recording->problem.value_or(Phrase())});
}

Phrase samplesSentence(const RecordingStatus& recording) {
    if (recording.samples == 0 || !recording.lastSampleAgeSeconds) return {};
    return Phrase::counted("%n samples, the last one taken %1 s ago.", "%n sample, taken %1 s ago.",
                           recording.samples, *recording.lastSampleAgeSeconds);
}

Phrase warningSentences(const CompanionStatus& status) {
    return Phrase::joined(status.warnings.value_or(std::vector<Phrase>()));
}

std::vector<std::string> statusLines(const CompanionStatus& status) {
    std::vector<std::string> lines{status.words.text()};
    for (const auto& warning : status.warnings.value_or(std::vector<Phrase>()))
        lines.push_back(warning.text());
    if (status.isRunning) {
        if (status.published) lines.push_back(publicationSentence(*status.published).text());
        if (status.port) lines.push_back(addressesSentence(status.addresses));
        if (status.stage) lines.push_back(stageSentences(*status.stage).text());
        lines.push_back(clientsSentence(status.clients).text());
        lines.push_back(recordingSentence(status.recording).text());
    }
    lines.push_back("Data folder: " + status.dataFolder);
    return lines;
}

} // namespace tarnly
