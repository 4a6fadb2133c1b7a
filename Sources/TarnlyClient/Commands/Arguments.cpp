#include "TarnlyClient/Commands/Arguments.hpp"

#include <charconv>
#include <cmath>

#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyClient/Output/ReadableText.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {
namespace {

double requireNumber(const std::string& name, const std::string& text) {
    const auto number = parseNumber(text);
    if (!number) throw CLI::ValidationError(name, "\"" + printable(text) + "\" is not a finite number");
    return *number;
}

// Each is empty where nothing is to be complained about.

std::string complaintIfEmpty(const std::string& text) {
    return text.empty() ? "a text that is not empty is wanted" : "";
}

std::string complaintAboutText(const std::string& text) {
    if (text.empty()) return complaintIfEmpty(text);
    return isWellFormedUtf8(text) ? "" : "\"" + printable(text) + "\" is not UTF-8";
}

std::string complaintAboutName(std::string_view name) {
    if (name.empty()) return "the name is missing";
    if (name.size() <= ProtocolLimits::nameSize) return "";
    return "the name is longer than " + std::to_string(ProtocolLimits::nameSize) + " bytes";
}

template <typename Value>
CLI::Option* addNumberInto(CLI::App& app, const std::string& name, Value& value,
                           const std::string& description) {
    const auto read = [name, &value](const std::string& text) { value = requireNumber(name, text); };
    return app.add_option_function<std::string>(name, read, description)->type_name("NUMBER");
}

std::optional<std::int64_t> parseIndex(std::string_view digits) {
    std::int64_t index = 0;
    const auto* end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, index);
    if (error != std::errc() || rest != end || index < 0 || digits.front() == '-') return std::nullopt;
    return index;
}

/// Pairing takes the first.
constexpr std::int64_t addedId = 1'000;

struct IdOnly {
    std::optional<std::int64_t> reqId;

    static constexpr auto fields() { return std::tuple(field("req_id", &IdOnly::reqId)); }
};

boost::json::object parseObject(const std::string& text) {
    try {
        return jsonObject(parseJson(text));
    } catch (const JsonError& error) {
        throw UsageError(std::string("the request is not a JSON object: ") + error.what());
    }
}

std::optional<std::int64_t> givenId(const boost::json::object& object) {
    try {
        return decodeJson<IdOnly>(object).reqId;
    } catch (const JsonError&) {
        return std::nullopt;
    }
}

} // namespace

std::optional<double> parseNumber(std::string_view text) {
    // from_chars knows no plus sign, but would take the minus behind one.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    double value = 0;
    const auto* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

CLI::Option* addNumber(CLI::App& app, const std::string& name, double& value,
                       const std::string& description) {
    return addNumberInto(app, name, value, description);
}

CLI::Option* addNumber(CLI::App& app, const std::string& name, std::optional<double>& value,
                       const std::string& description) {
    return addNumberInto(app, name, value, description);
}

CLI::Option* addSeconds(CLI::App& app, const std::string& name, const std::string& description,
                        std::function<void(std::chrono::milliseconds)> take) {
    const auto read = [name, take = std::move(take)](const std::string& text) {
        const auto seconds = requireNumber(name, text);
        if (seconds <= 0 || seconds > 1e7) throw CLI::ValidationError(name, text + " is no time to wait");
        take(std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds)));
    };
    return app.add_option_function<std::string>(name, read, description)->type_name("SECONDS");
}

CLI::Validator numberFrom(double least, double most, const std::string& wanted) {
    const auto check = [=](const std::string& text) {
        const auto number = parseNumber(text);
        const bool isFine = !number || (*number >= least && *number <= most);
        if (isFine) return std::string(); // what is no number is refused where it is read
        return text + " is out of range: " + wanted + " from " + numberText(least) + " to " +
               numberText(most) + " are wanted";
    };
    return {check, ""};
}

CLI::Validator notEmpty() { return {complaintIfEmpty, ""}; }

CLI::Validator utf8Text() { return {complaintAboutText, ""}; }

CLI::Validator simulatorName() {
    const auto check = [](const std::string& name) {
        const auto complaint = complaintAboutText(name);
        return complaint.empty() ? complaintAboutName(name) : complaint;
    };
    return {check, ""};
}

std::string parseableArgument(std::string argument) {
    const bool startsWithPoint = argument.size() > 2 && argument.starts_with("-.") && isDigit(argument[2]);
    if (startsWithPoint) argument.insert(1, "0");
    return argument;
}

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
    if (const auto complaint = complaintAboutName(name); !complaint.empty()) throw refuse(complaint);
    if (name.find_first_of("[]") != std::string_view::npos)
        throw refuse("the brackets of the index do not match");
    return {std::string(name), *value, index};
}

RawRequest rawRequest(std::string text) {
    const auto object = parseObject(text);
    if (object.contains("req_id")) return {std::move(text), givenId(object)};
    const auto member = "\"req_id\":" + std::to_string(addedId) + (object.empty() ? "" : ",");
    text.insert(text.find('{') + 1, member);
    return {std::move(text), addedId};
}

bool isFlightPath(const std::string& nameOrPath) { return nameOrPath.find('/') != std::string::npos; }

std::string pathOfFlight(const std::vector<FlightListing>& flights, const std::string& name) {
    std::vector<std::string> paths;
    for (const auto& flight : flights) {
        if (flight.name == name) paths.push_back(flight.path);
    }
    const auto shown = "\"" + printable(name) + "\"";
    if (paths.empty())
        throw ClientError("no flight is named " + shown + "; flights lists those that are there");
    if (paths.size() == 1) return paths.front();
    auto complaint = "several flights are named " + shown + "; say which by its path:";
    for (const auto& path : paths)
        complaint += "\n  " + printable(path);
    throw ClientError(complaint);
}

} // namespace tarnly::client
