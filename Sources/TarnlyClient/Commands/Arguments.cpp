#include "TarnlyClient/Commands/Arguments.hpp"

#include <charconv>
#include <cmath>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

double requireNumber(const std::string& name, const std::string& text) {
    const auto number = parseNumber(text);
    if (!number) throw CLI::ValidationError(name, "\"" + printable(text) + "\" is not a finite number");
    return *number;
}

template <typename Value>
CLI::Option* addNumberInto(CLI::App& app, const std::string& name, Value& value,
                           const std::string& description) {
    const auto read = [name, &value](const std::string& text) { value = requireNumber(name, text); };
    return app.add_option_function<std::string>(name, read, description)->type_name("NUMBER");
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

CLI::Validator utf8Text() {
    const auto check = [](std::string& text) {
        return wellFormedUtf8(text) == text ? std::string() : "\"" + printable(text) + "\" is not UTF-8";
    };
    return {check, ""};
}

std::string parseableArgument(std::string argument) {
    const bool startsWithPoint = argument.size() > 2 && argument.starts_with("-.") && isDigit(argument[2]);
    if (startsWithPoint) argument.insert(1, "0");
    return argument;
}

} // namespace tarnly::client
