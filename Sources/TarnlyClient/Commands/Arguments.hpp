#pragma once

#include <CLI/App.hpp>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tarnly::client {

/// The number that is all of `text`, as on the wire a finite double; absent when it is none.
std::optional<double> parseNumber(std::string_view text);

/// Declares an option or positional that is a finite number. `value` must outlive the parsing.
CLI::Option* addNumber(CLI::App& app, const std::string& name, double& value, const std::string& description);

/// The same for one that may be left out.
CLI::Option* addNumber(CLI::App& app, const std::string& name, std::optional<double>& value,
                       const std::string& description);

/// Declares an option that is a time of more than no and at most ten million seconds, which is handed to
/// `take`.
CLI::Option* addSeconds(CLI::App& app, const std::string& name, const std::string& description,
                        std::function<void(std::chrono::milliseconds)> take);

/// Refuses text that cannot be sent because it is not UTF-8.
CLI::Validator utf8Text();

/// `argument` as the parser takes it: a negative number that begins with its point is none to it.
std::string parseableArgument(std::string argument);

} // namespace tarnly::client
