#include "TarnlyClient/Commands/InputFiles.hpp"

#include <algorithm>
#include <array>
#include <boost/json/stream_parser.hpp>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <optional>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

/// The line, from 1, in which `text` stops being JSON; absent when that is not what is wrong with it.
std::optional<std::size_t> lineOfError(std::string_view text) {
    boost::json::stream_parser parser;
    boost::json::error_code error;
    const auto reached = parser.write_some(text.data(), text.size(), error);
    if (!error && parser.done() && reached == text.size()) return std::nullopt;
    // A text that is cut off stops being JSON at its last line, not behind it.
    auto before = text.substr(0, reached);
    while (reached == text.size() && !before.empty() && before.back() == '\n')
        before.remove_suffix(1);
    return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

boost::json::value parse(std::string_view text, const std::string& name) {
    try {
        return parseJson(text);
    } catch (const JsonError& error) {
        const auto line = lineOfError(text);
        throw UsageError(name + (line ? ", line " + std::to_string(*line) : "") +
                         ": no valid JSON: " + error.what());
    }
}

const boost::json::array& triggersOf(const boost::json::value& json, const std::string& name) {
    const auto* list = &json;
    if (const auto* object = json.if_object()) list = object->if_contains("triggers");
    if (list == nullptr || !list->is_array()) {
        throw UsageError(name + R"(: a list of triggers is wanted, or an object {"triggers":[…]})");
    }
    return list->get_array();
}

/// A trigger by its place, and by its id where it has one.
std::string describeTrigger(std::size_t index, const boost::json::value& json) {
    auto text = "trigger " + std::to_string(index + 1);
    const auto* object = json.if_object();
    const auto* id = object == nullptr ? nullptr : object->if_contains("id");
    if (id != nullptr && id->is_string()) text += " \"" + std::string(id->get_string()) + "\"";
    return text;
}

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
        throw UsageError(shown + " cannot be read: " + std::strerror(errno));
    }
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty()) throw UsageError(shown + " has no password on its first line");
    if (wellFormedUtf8(line) != line) throw UsageError(shown + " is not UTF-8");
    return line;
}

LoadScriptRequest parseScript(std::string_view text, const std::string& name) {
    const auto json = parse(text, name);
    LoadScriptRequest script;
    for (const auto& element : triggersOf(json, name)) {
        try {
            script.triggers.push_back(decodeJson<ScriptTrigger>(element));
        } catch (const JsonError& error) {
            throw UsageError(name + ": " + printable(describeTrigger(script.triggers.size(), element)) +
                             ": " + error.what());
        }
    }
    return script;
}

LoadScriptRequest readScript(const std::string& file, std::istream& input) {
    if (file == "-") return parseScript(readAll(input), "the script");
    const auto name = "the script " + file;
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    const auto text = readAll(stream);
    if (stream.bad() || !stream.is_open()) {
        throw UsageError(name + " cannot be read: " + std::strerror(errno));
    }
    return parseScript(text, name);
}

} // namespace tarnly::client
