#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

/// One dataref or command that the simulator knows. An id is valid for one run of the simulator.
struct CatalogEntry {
    std::int64_t id = 0;
    std::string name;

    bool operator==(const CatalogEntry&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("id", &CatalogEntry::id), field("name", &CatalogEntry::name));
    }
};

using IdsByName = std::unordered_map<std::string, std::int64_t>;

/// The entries of a catalogue response, in their order. Entries that are no objects are passed over: some
/// versions of the simulator have null among their commands. Throws `JsonError` for a body that is not a
/// catalogue.
std::vector<CatalogEntry> parseCatalog(std::string_view data);

/// Of entries with the same name the last counts.
IdsByName idsByName(std::vector<CatalogEntry> entries);

} // namespace tarnly
