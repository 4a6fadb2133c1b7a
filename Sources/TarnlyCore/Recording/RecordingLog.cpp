#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

std::optional<std::string> encoded(const LogLine& line) {
    try {
        return encodeJson(line);
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

std::optional<LogLine> parse(std::string_view text) {
    try {
        auto line = decodeJson<LogLine>(parseJson(text));
        if (line.isComplete()) return line;
    } catch (const JsonError&) {
    }
    return std::nullopt;
}

} // namespace

LogLine LogLine::of(TrackSample sample) { return {std::string(sampleKind), std::move(sample), std::nullopt}; }

LogLine LogLine::of(FiredTriggerEvent event) {
    return {std::string(firedKind), std::nullopt, std::move(event)};
}

bool LogLine::isComplete() const {
    if (kind == sampleKind) return sample.has_value();
    if (kind == firedKind) return fired.has_value();
    return true;
}

std::string RecordingLog::fileName(std::chrono::sys_seconds startTime) {
    const auto day = std::chrono::floor<std::chrono::days>(startTime);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(startTime - day);
    std::array<char, 64> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "session-%d-%02u-%02uT%02d%02d%02dZ.jsonl",
                      static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                      static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

std::optional<RecordingLog> RecordingLog::create(const std::filesystem::path& file) {
    auto created = createFreshPrivateFile(file);
    if (!created.isOpen()) return std::nullopt;
    return RecordingLog(std::move(created));
}

// One write of the line together with its line feed: between two writes a kill would leave a line that lacks
// its end.
void RecordingLog::append(const LogLine& line) {
    const auto text = encoded(line);
    if (!text) return;
    // A line that was cut short stays alone, lest it spoil this one.
    const std::string_view lineStart = endsWithLineFeed_ ? "" : "\n";
    write(std::string(lineStart).append(*text).append("\n"));
}

void RecordingLog::write(std::string_view text) {
    const auto written = file_.write(text);
    if (written > 0) endsWithLineFeed_ = text[written - 1] == '\n';
}

std::optional<LogLine> RecordingLogReader::next() {
    std::string text;
    while (std::getline(log_, text)) {
        auto line = parse(text);
        if (line) return line;
        const bool lacksLineFeed = log_.eof();
        if (lacksLineFeed) {
            hasTornEnd_ = true;
        } else {
            ++unreadableLines_;
        }
    }
    return std::nullopt;
}

} // namespace tarnly
