#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <cmath>
#include <string>

#include "Fuzz/Targets.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonError.hpp"

namespace tarnly::fuzz {
namespace {

void readCatalogue(std::string text) {
    try {
        for (const auto& [name, id] : parseCatalogue(std::move(text)))
            require(isWellFormedUtf8(name), "names are UTF-8");
    } catch (const JsonError&) {
    }
}

void readMessage(std::string text) {
    const auto message = parseWebApiMessage(std::move(text));
    for (const auto& [id, value] : message.update.values)
        require(std::isfinite(value), "values are numbers");
    for (const auto& [id, values] : message.update.arrayValues) {
        for (const double value : values)
            require(std::isfinite(value), "elements are numbers");
    }
    for (const auto id : message.update.notNumbers)
        require(!message.update.values.contains(id) || !message.update.arrayValues.contains(id),
                "no id is everything");
}

void readBody(const std::string& body) {
    const auto words = errorMessageOf(body);
    require(words.find('\n') == std::string::npos && isWellFormedUtf8(words),
            "the words are a line of UTF-8");
    const auto version = simulatorVersionIn(body);
    require(!version || isWellFormedUtf8(*version), "the version is UTF-8");
    valueIn(body);
    countIn(body);
}

void readInteger(const std::string& text) {
    const auto found = parseDecimalInteger(text);
    if (!found) return;
    const auto plain = std::to_string(*found);
    require(parseDecimalInteger(plain) == found, "integers are read as they are written");
}

} // namespace

void webApiMessages(std::string_view bytes) {
    if (bytes.empty()) return;
    std::string text(bytes.substr(1));
    switch (bytes[0] & 3) {
        case 0:
            return readCatalogue(std::move(text));
        case 1:
            return readMessage(std::move(text));
        case 2:
            return readBody(text);
        default:
            return readInteger(text);
    }
}

} // namespace tarnly::fuzz
