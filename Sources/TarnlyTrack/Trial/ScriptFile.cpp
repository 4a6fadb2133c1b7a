#include "TarnlyTrack/Trial/ScriptFile.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>

#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::track {
namespace {

/// More are no help to who uses a script; the check lists all.
constexpr std::size_t mostWarnings = 20;

std::string readAll(std::istream& stream) {
    std::string text;
    std::array<char, 4096> chunk{};
    do {
        stream.read(chunk.data(), chunk.size());
        text.append(chunk.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    return text;
}

} // namespace

std::string readScript(const std::string& file, std::istream& input) {
    if (file == "-") return readAll(input);
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    auto text = readAll(stream);
    if (stream.bad() || !stream.is_open()) {
        throw UsageError("the script " + file + " cannot be read: " + std::strerror(errno) +
                         "; name one that you may read");
    }
    return text;
}

LoadScriptRequest parseScript(std::string_view text, const std::string& file) {
    try {
        const auto json = parseJson(text);
        if (json.is_array()) return {decodeJson<std::vector<ScriptTrigger>>(json)};
        return decodeJson<LoadScriptRequest>(json);
    } catch (const JsonError&) {
        throw UsageError("the script " + file + " is not sent, as companions would refuse it");
    }
}

std::vector<std::string> scriptWarnings(const std::string& text, const std::string& file) {
    const auto findings = checkScript(text);
    const auto shown = std::min(findings.size(), mostWarnings);
    std::vector<std::string> warnings;
    for (std::size_t index = 0; index < shown; ++index)
        warnings.push_back(findingText(file, findings[index]));
    if (shown < findings.size()) {
        warnings.push_back("and " + std::to_string(findings.size() - shown) +
                           " more; script --check lists them all");
    }
    return warnings;
}

} // namespace tarnly::track
