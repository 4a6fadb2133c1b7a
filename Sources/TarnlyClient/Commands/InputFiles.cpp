#include "TarnlyClient/Commands/InputFiles.hpp"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <vector>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

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

std::string readPassword(const std::filesystem::path& file) {
    const auto shown = "the password file " + file.string();
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::string line;
    std::getline(stream, line);
    if (stream.bad() || !stream.is_open()) {
        throw UsageError(shown + " cannot be read: " + std::strerror(errno) + "; name one that you may read");
    }
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty()) throw UsageError(shown + " has no password on its first line; write it there");
    if (wellFormedUtf8(line) != line)
        throw UsageError(shown + " is not UTF-8; save it anew in that encoding");
    return line;
}

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

} // namespace tarnly::client
