#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

class FileSink final : public LogSink {
  public:
    explicit FileSink(File file) : file_(std::move(file)) {}

    std::size_t write(std::string_view text) override { return file_.write(text); }
    void flush() override { file_.flushContent(); }

  private:
    const File file_;
};

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

std::unique_ptr<LogSink> RecordingLog::createFile(const std::filesystem::path& file) {
    auto created = createFreshPrivateFile(file);
    if (!created.isOpen()) return nullptr;
    return std::make_unique<FileSink>(std::move(created));
}

void RecordingLog::append(std::string_view lines) {
    if (lines.empty()) return;
    if (endsWithLineFeed_) return write(lines);
    // A line that was cut short stays alone, lest it spoil these.
    write(std::string("\n").append(lines));
}

void RecordingLog::write(std::string_view text) {
    const auto written = sink_->write(text);
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
