#pragma once

#include <CLI/App.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyPlatform/Base/UsageError.hpp"

namespace tarnly::client {

// What a person wrote on the command line, taken as what is meant.

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

/// Refuses a number outside of `least` to `most`, and says what is wanted: "degrees", say, "from -90 to 90".
CLI::Validator numberFrom(double least, double most, const std::string& wanted);

/// Refuses text that is empty, which scripts pass for a variable that is not set.
CLI::Validator notEmpty();

/// Refuses text that is empty, or cannot be sent because it is not UTF-8.
CLI::Validator utf8Text();

/// The same, and what is longer than the name of a dataref or a command may be.
CLI::Validator simulatorName();

/// `argument` as the parser takes it: a negative number that begins with its point is none to it.
std::string parseableArgument(std::string argument);

/// "NAME=VALUE", or "NAME[2]=VALUE" for one element of an array. Throws `UsageError` for anything else, a
/// value that is not a finite number included.
DatarefSetEntry parseAssignment(std::string_view text);

/// A request as the person wrote it.
struct RawRequest {
    std::string text;
    /// By which its answer is known; absent where `text` has one that is no id, as the companion will say.
    std::optional<std::int64_t> reqId;
};

/// Takes `text` as it is, but for a "req_id" that is added where there is none: without it the answer could
/// not be told from a push. Throws `UsageError` when it is not a JSON object.
RawRequest rawRequest(std::string text);

/// Whether `nameOrPath` is a path rather than the name of a flight.
bool isFlightPath(const std::string& nameOrPath);

/// The path of the only flight of exactly this name. Throws `ClientError` when there is none, or several.
std::string pathOfFlight(const std::vector<FlightListing>& flights, const std::string& name);

} // namespace tarnly::client
