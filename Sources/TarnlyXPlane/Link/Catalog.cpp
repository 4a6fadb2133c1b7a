#include "TarnlyXPlane/Link/Catalog.hpp"

#include <utility>

#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {

std::vector<CatalogEntry> parseCatalog(std::string_view data) {
    const auto body = parseJson(data);
    const auto* list = jsonObject(body).if_contains("data");
    if (list == nullptr) throwMissingKey("data");
    const auto& array = jsonArray(*list);
    std::vector<CatalogEntry> entries;
    entries.reserve(array.size());
    for (const auto& entry : array) {
        if (entry.is_object()) entries.push_back(decodeJson<CatalogEntry>(entry));
    }
    return entries;
}

IdsByName idsByName(std::vector<CatalogEntry> entries) {
    IdsByName ids;
    ids.reserve(entries.size());
    for (auto& entry : entries)
        ids.insert_or_assign(std::move(entry.name), entry.id);
    return ids;
}

} // namespace tarnly
