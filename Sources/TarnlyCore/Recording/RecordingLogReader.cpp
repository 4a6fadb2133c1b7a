#include "TarnlyCore/Recording/RecordingLogReader.hpp"

#include <string_view>

#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

std::optional<LogLine> parse(std::string_view text) {
    try {
        auto line = decodeJson<LogLine>(parseJson(text));
        if (line.isComplete()) return line;
    } catch (const JsonError&) {
    }
    return std::nullopt;
}

} // namespace

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
