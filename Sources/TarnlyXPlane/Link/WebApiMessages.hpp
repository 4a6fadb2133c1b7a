#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// What goes over the wire between the simulator's web API and us: its own vocabulary, and the texts that are
/// read and written. Plain values and functions, callable from any thread.
namespace tarnly {

inline constexpr std::string_view webApiPath = "/api/v2";

/// The `type` of a message on the simulator's WebSocket.
namespace WebApiType {
inline constexpr std::string_view subscribeValues = "dataref_subscribe_values";
inline constexpr std::string_view setValues = "dataref_set_values";
inline constexpr std::string_view updateValues = "dataref_update_values";
inline constexpr std::string_view result = "result";
} // namespace WebApiType

/// A dataref to subscribe to, or with `value` one to write; `index` names one element of an array.
struct DatarefEntry {
    std::int64_t id = 0;
    std::optional<double> value;
    std::optional<std::int64_t> index;

    static constexpr auto fields() {
        return std::tuple(field("id", &DatarefEntry::id), field("value", &DatarefEntry::value),
                          field("index", &DatarefEntry::index));
    }
};

struct DatarefParams {
    std::vector<DatarefEntry> datarefs;

    static constexpr auto fields() { return std::tuple(field("datarefs", &DatarefParams::datarefs)); }
};

/// A message to the simulator.
struct WebApiRequest {
    std::string type;
    std::int64_t reqId = 0;
    DatarefParams params;

    static constexpr auto fields() {
        return std::tuple(field("type", &WebApiRequest::type), field("req_id", &WebApiRequest::reqId),
                          field("params", &WebApiRequest::params));
    }
};

/// One dataref or command that the simulator knows. An id is valid for one run of the simulator.
struct CatalogueEntry {
    std::int64_t id = 0;
    std::string name;

    static constexpr auto fields() {
        return std::tuple(field("id", &CatalogueEntry::id), field("name", &CatalogueEntry::name));
    }
};

using IdsByName = std::unordered_map<std::string, std::int64_t>;

/// The entries of a catalogue response; of those with the same name the last counts. Bytes that are not UTF-8
/// count as U+FFFD. Passed over are entries that are no objects, as some versions of the simulator have null
/// among their commands, and those whose id or name is missing or of another kind. Throws `JsonError` for a
/// body that is not a catalogue.
IdsByName parseCatalogue(std::string data);

/// The values that one message of the simulator brings, by dataref id. All are finite.
struct DatarefUpdate {
    std::map<std::int64_t, double> values;
    std::map<std::int64_t, std::vector<double>> arrayValues;
    /// What has become something that is no number: infinite, or none at all.
    std::set<std::int64_t> notNumbers{};

    /// Whether any of `ids` is among them.
    bool hasAny(std::span<const std::int64_t> ids) const;
};

/// The simulator's answer to a request.
struct WebApiResult {
    std::int64_t reqId = 0;
    bool isSuccess = true;

    bool operator==(const WebApiResult&) const = default;
};

struct WebApiMessage {
    DatarefUpdate update;
    std::optional<WebApiResult> result;
};

/// Reads a "dataref_update_values" or a "result" message; empty for any other text, JSON or not.
///
/// True and false count as 1 and 0. An entry is passed over when its key is not a decimal integer. A value
/// that is neither a number nor an array of numbers, or has an infinite number, which the simulator writes as
/// 1e+9999, is only noted: one dataref gone wild must not freeze the others.
WebApiMessage parseWebApiMessage(std::string text);

/// The values of `parseWebApiMessage`.
DatarefUpdate parseDatarefUpdate(std::string text);

/// The simulator's own words in an error response; empty where there are none. One line, and not too long.
std::string errorMessageOf(const std::string& body);

/// The simulator's version in a response about its capabilities, "12.4.0".
std::optional<std::string> simulatorVersionIn(const std::string& body);

/// The number in a response `{"data":7396}`.
std::optional<double> valueIn(const std::string& body);
std::optional<std::int64_t> countIn(const std::string& body);

/// `text` as a decimal integer: ASCII digits with at most one sign, "+" or "-", before them. Absent for
/// anything else and beyond 64 bits.
std::optional<std::int64_t> parseDecimalInteger(std::string_view text);

} // namespace tarnly
