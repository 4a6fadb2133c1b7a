#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Files/File.hpp"
#include "TarnlyPlatform/Files/PrivateFiles.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

/// More than anybody begins in one second.
constexpr int mostNames = 10'000;

std::error_code lastError() { return {errno, std::generic_category()}; }

class FileSink final : public LogSink {
  public:
    FileSink(File file, std::filesystem::path path) : file_(std::move(file)), path_(std::move(path)) {}

    std::error_code write(std::size_t place, std::string_view text) override {
        return file_.writeAt(place, text) == text.size() ? std::error_code() : lastError();
    }
    std::error_code flush() override { return file_.flushContent() ? std::error_code() : lastError(); }
    bool isInPlace(std::size_t size) const override { return file_.isAt(path_) && file_.size() >= size; }

  private:
    const File file_;
    const std::filesystem::path path_;
};

/// "session-2026-11-16T010938Z-2.jsonl"
std::filesystem::path numbered(const std::filesystem::path& file, int number) {
    if (number == 1) return file;
    const auto name = file.stem().string() + "-" + std::to_string(number) + file.extension().string();
    return file.parent_path() / name;
}

/// Not open where there is anything else.
File openUnused(const std::filesystem::path& file) {
    auto opened = File::open(file, File::Mode::rewrite);
    if (!opened.isOpen() || opened.size() != 0 || !opened.closeToOthers()) return {};
    return opened;
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

OpenedLog RecordingLog::open(const std::filesystem::path& file, MissingFolder missing) {
    if (missing == MissingFolder::make) createPrivateFolders(file.parent_path());
    for (int number = 1; number <= mostNames; ++number) {
        const auto path = numbered(file, number);
        auto opened = File::open(path, File::Mode::create);
        if (!opened.isOpen()) {
            if (errno != EEXIST) return {nullptr, path, lastError()};
            opened = openUnused(path);
        }
        // One that is empty may yet be written: its disk may be full, or its recording have no samples.
        if (!opened.isOpen() || opened.tryLock() == File::Lock::heldByAnother) continue;
        if (opened.size() != 0) continue;
        return {std::make_unique<FileSink>(std::move(opened), path), path, {}};
    }
    return {nullptr, file, std::make_error_code(std::errc::file_exists)};
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
