#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnly {

/// One element of an array dataref: "sim/a[3]" is element 3 of "sim/a".
struct IndexedName {
    std::string base;
    /// As written, so it may be negative.
    std::int64_t index = 0;

    bool operator==(const IndexedName&) const = default;
};

/// Splits a name at its first "[". Absent unless the name ends with "]" and what stands between is an
/// integer: such a name is one whole.
std::optional<IndexedName> parseIndexedName(std::string_view name);

} // namespace tarnly
