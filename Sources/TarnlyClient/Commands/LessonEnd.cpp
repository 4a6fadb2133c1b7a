#include "TarnlyClient/Commands/LessonEnd.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "TarnlyClient/Companion/CatchUp.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly::client {
namespace {

constexpr std::chrono::milliseconds statusPatience{1'000};

constexpr auto elsewhere = "on the companion's computer, in the folder Recordings of its data folder";

Task<> stopAndCatchUp(CompanionSession& session, bool isRecordingOwn, std::vector<LogLine>& lines) {
    co_await session.pair();
    if (isRecordingOwn) {
        co_await session.request(MessageType::recordingStop);
    }
    CatchUpRequest all;
    auto data = co_await session.request(MessageType::catchUp, std::move(all));
    lines = linesInLogOrder(decodeAnswer<RecordedFlight>(data));
}

bool isThisComputer(const std::string& host) {
    if (host == "localhost") return true;
    const auto addresses = interfaceAddresses();
    return std::ranges::any_of(addresses, [&](const auto& each) { return each.address == host; });
}

/// Absent where the companion is none of this computer, or records nothing.
std::optional<std::string> pathOfRecording(const Endpoint& companion,
                                           const std::optional<std::filesystem::path>& dataFolder) {
    if (!isThisComputer(companion.host)) return std::nullopt;
    try {
        const auto folder = dataFolder ? *dataFolder : applicationDataFolder();
        const auto status = decodeJson<CompanionStatus>(parseJson(askForStatus(folder, statusPatience)));
        const bool isThisOne = status.port == companion.port && status.recording;
        if (isThisOne && !status.recording->file.empty()) return status.recording->file;
    } catch (const std::runtime_error&) {
        return std::nullopt; // none, or one of another version
    }
    return std::nullopt;
}

} // namespace

void endRecording(const CommandContext& context, const Endpoint& companion, bool isRecordingOwn,
                  LessonFlight& flight) {
    std::vector<LogLine> lines;
    holdSession(companion, context.sessionOptions(),
                [&](CompanionSession& session) { return stopAndCatchUp(session, isRecordingOwn, lines); });
    LessonPart whole;
    for (const auto& line : lines)
        whole.take(line);
    // Another client may have begun another one in the last second: what was flown is kept, not that.
    if (whole.lines().starts_with(flight.parts().back().lines())) flight.replaceLast(lines);
}

RecordingPaths::RecordingPaths(const Endpoint& companion,
                               const std::optional<std::filesystem::path>& dataFolder)
    : dataFolder_(dataFolder), first_(pathOfRecording(companion, dataFolder)) {}

std::vector<std::string> RecordingPaths::ofParts(std::size_t count, const Endpoint& companion) const {
    const auto last = pathOfRecording(companion, dataFolder_);
    std::vector<std::string> result(count, elsewhere);
    // The log of a recording is made with its first sample, which may have come since.
    if (first_ || (last && count == 1)) result.front() = first_ ? *first_ : *last;
    if (last && count > 1) result.back() = *last;
    return result;
}

void saveFlight(const std::filesystem::path& file, const LessonFlight& flight) {
    errno = 0;
    std::ofstream stream(file, std::ios::binary);
    for (const auto& part : flight.parts())
        stream << part.lines();
    stream.close();
    if (stream) return;
    throw ClientError("the flight cannot be saved in " + printable(file.string()) + ": " +
                      std::generic_category().message(errno) +
                      "; the companion has it, tarnly-client --json catch-up prints it");
}

} // namespace tarnly::client
