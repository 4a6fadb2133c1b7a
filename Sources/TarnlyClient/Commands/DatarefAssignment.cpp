#include "TarnlyClient/Commands/DatarefAssignment.hpp"

#include <charconv>
#include <optional>
#include <string>

#include "TarnlyClient/Commands/Arguments.hpp"
#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {
namespace {

std::optional<std::int64_t> parseIndex(std::string_view digits) {
    std::int64_t index = 0;
    const auto* end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, index);
    if (error != std::errc() || rest != end || index < 0 || digits.front() == '-') return std::nullopt;
    return index;
}

} // namespace

DatarefSetEntry parseAssignment(std::string_view text) {
    const auto refuse = [&](const std::string& reason) {
        return UsageError("\"" + printable(text) + "\": " + reason);
    };
    const auto equals = text.find('=');
    if (equals == std::string_view::npos) throw refuse("NAME=VALUE or NAME[INDEX]=VALUE is wanted");
    const auto value = parseNumber(text.substr(equals + 1));
    if (!value) throw refuse("the value is not a finite number");
    auto name = text.substr(0, equals);
    std::optional<std::int64_t> index;
    if (const auto bracket = name.find('['); bracket != std::string_view::npos && name.ends_with(']')) {
        index = parseIndex(name.substr(bracket + 1, name.size() - bracket - 2));
        if (!index) throw refuse("the index is not a whole number from 0 on");
        name = name.substr(0, bracket);
    }
    if (name.empty()) throw refuse("the name is missing");
    if (name.find_first_of("[]") != std::string_view::npos)
        throw refuse("the brackets of the index do not match");
    return {std::string(name), *value, index};
}

} // namespace tarnly::client
