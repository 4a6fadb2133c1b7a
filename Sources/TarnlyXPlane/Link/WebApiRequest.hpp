#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

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

} // namespace tarnly
