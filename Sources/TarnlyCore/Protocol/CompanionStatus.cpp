#include "TarnlyCore/Protocol/CompanionStatus.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

double tenths(std::chrono::nanoseconds time) { return std::floor(static_cast<double>(time / 100ms)) / 10; }

std::string twoDigits(std::chrono::seconds::rep number) {
    const auto text = std::to_string(number);
    return number < 10 ? "0" + text : text;
}

/// "0:05", "1:00:05"
std::string durationText(double seconds) {
    const std::chrono::hh_mm_ss time(std::chrono::seconds(static_cast<std::chrono::seconds::rep>(seconds)));
    const auto hours = time.hours().count();
    const auto minutes = time.minutes().count();
    const auto start = hours > 0 ? std::to_string(hours) + ":" + twoDigits(minutes) : std::to_string(minutes);
    return start + ":" + twoDigits(time.seconds().count());
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

std::string sentence(std::string clause) {
    clause.at(0) = static_cast<char>(std::toupper(static_cast<unsigned char>(clause.at(0))));
    return clause + ".";
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
    status.words = wellFormedUtf8(stageWords(stage, now));
    status.advice = stageAdvice(stage);
    if (!stage.detail.empty()) status.detail = wellFormedUtf8(stage.detail);
    if (stage.silentSince) {
        const auto silent = std::max(now - *stage.silentSince, Clock::Duration::zero());
        status.silentSeconds = std::chrono::floor<std::chrono::seconds>(silent).count();
    }
    return status;
}

PublicationStatus PublicationStatus::of(const std::optional<PublicationState>& publication) {
    if (!publication) return {"off", {}, {}};
    const auto text = wellFormedUtf8(publication->text);
    switch (publication->kind) {
        case PublicationState::Kind::publishing:
            return {"publishing", {}, {}};
        case PublicationState::Kind::published:
            return {"published", text, {}};
        case PublicationState::Kind::noDaemon:
        case PublicationState::Kind::refused:
            break;
    }
    return {"not_published", {}, text};
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
    if (!progress.problem.empty()) status.problem = wellFormedUtf8(progress.problem);
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

void CompanionStatus::warn(std::string_view sentence) {
    if (!warnings) warnings.emplace();
    warnings->push_back(wellFormedUtf8(std::string(sentence)));
}

std::string stageSentences(const StageStatus& stage) {
    const auto first = stage.words + ".";
    return stage.advice.empty() ? first : first + " " + sentence(stage.advice);
}

std::string publicationSentence(const PublicationStatus& published) {
    if (published.name) return "Published by DNS-SD as \"" + *published.name + "\".";
    if (published.reason) return "Not published by DNS-SD: " + *published.reason + ".";
    return published.state == "publishing" ? "Being published by DNS-SD." : "Not published by DNS-SD.";
}

std::string clientsSentence(const ClientsStatus& clients) {
    if (clients.paired == 0) return "No client is paired.";
    if (clients.paired == 1) return "1 client is paired.";
    return std::to_string(clients.paired) + " clients are paired.";
}

std::string recordingSentence(const std::optional<RecordingStatus>& recording) {
    if (!recording) return "No recording is running.";
    const auto duration = "Recording for " + durationText(recording->runningSeconds);
    const auto sentence = duration + (recording->samples == 0 ? ", no samples yet." : ".");
    return recording->problem ? sentence + " " + *recording->problem : sentence;
}

std::string samplesSentence(const RecordingStatus& recording) {
    if (recording.samples == 0 || !recording.lastSampleAgeSeconds) return {};
    const bool isOne = recording.samples == 1;
    auto text =
        std::to_string(recording.samples) + (isOne ? " sample, taken " : " samples, the last one taken ");
    appendNumber(text, *recording.lastSampleAgeSeconds);
    return text + " s ago.";
}

std::string warningSentences(const CompanionStatus& status) {
    std::string text;
    for (const auto& warning : status.warnings.value_or(std::vector<std::string>()))
        text.append(text.empty() ? "" : " ").append(warning);
    return text;
}

std::vector<std::string> statusLines(const CompanionStatus& status) {
    std::vector<std::string> lines{status.words};
    if (status.warnings) lines.insert(lines.end(), status.warnings->begin(), status.warnings->end());
    if (status.isRunning) {
        if (status.published) lines.push_back(publicationSentence(*status.published));
        if (status.port) lines.push_back(addressesSentence(status.addresses));
        if (status.stage) lines.push_back(stageSentences(*status.stage));
        lines.push_back(clientsSentence(status.clients));
        lines.push_back(recordingSentence(status.recording));
    }
    lines.push_back("Data folder: " + status.dataFolder);
    return lines;
}

} // namespace tarnly
