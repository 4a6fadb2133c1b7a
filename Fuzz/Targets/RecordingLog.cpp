#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <algorithm>
#include <sstream>
#include <string>

#include "Fuzz/Targets.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::fuzz {

void recordingLog(std::string_view bytes) {
    std::istringstream log{std::string(bytes)};
    RecordingLogReader reader(log);
    std::size_t lines = 0;
    while (const auto line = reader.next()) {
        ++lines;
        require(line->isComplete(), "what is read is whole");
        const auto text = encodeJson(*line);
        require(decodeJson<LogLine>(parseJson(text)) == *line, "lines are read as they are written");
    }
    const auto feeds = static_cast<std::size_t>(std::ranges::count(bytes, '\n'));
    require(lines + reader.unreadableLines() <= feeds + 1, "no line is read twice");
    require(!reader.hasTornEnd() || !bytes.ends_with('\n'), "a line feed ends a line");
}

} // namespace tarnly::fuzz
