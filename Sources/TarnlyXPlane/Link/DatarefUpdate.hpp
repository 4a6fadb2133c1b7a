#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tarnly {

/// The values that one message of the simulator brings, by dataref id. All are finite.
struct DatarefUpdate {
    std::map<std::int64_t, double> values;
    std::map<std::int64_t, std::vector<double>> arrayValues;
};

/// Reads a "dataref_update_values" message; empty for any other text, JSON or not.
///
/// True and false count as 1 and 0. An entry is passed over when its key is not a decimal integer or its
/// value is neither a number nor an array of numbers. So is one with an infinite number, which the simulator
/// writes as 1e+9999: one dataref gone wild must not freeze the others.
DatarefUpdate parseDatarefUpdate(std::string text);

} // namespace tarnly
