#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

namespace json = boost::json;

std::optional<double> finiteNumber(const json::value& value) {
    if (value.is_bool()) return value.get_bool() ? 1.0 : 0.0;
    if (!value.is_number()) return std::nullopt;
    const auto number = value.to_number<double>();
    if (!std::isfinite(number)) return std::nullopt;
    return number;
}

std::optional<std::vector<double>> finiteNumbers(const json::array& array) {
    std::vector<double> numbers;
    numbers.reserve(array.size());
    for (const auto& element : array) {
        const auto number = finiteNumber(element);
        if (!number) return std::nullopt;
        numbers.push_back(*number);
    }
    return numbers;
}

void addEntry(DatarefUpdate& update, std::string_view key, const json::value& value) {
    const auto id = parseDecimalInteger(key);
    if (!id) return;
    if (const auto* array = value.if_array()) {
        auto numbers = finiteNumbers(*array);
        if (numbers) update.arrayValues.insert_or_assign(*id, std::move(*numbers));
        return;
    }
    const auto number = finiteNumber(value);
    if (number) update.values.insert_or_assign(*id, *number);
}

/// The object with the values, or null when `message` is not an update.
const json::object* updateData(const json::value& message) {
    const auto* object = message.if_object();
    const auto* type = object == nullptr ? nullptr : object->if_contains("type");
    if (type == nullptr || !type->is_string() || type->get_string() != WebApiType::updateValues)
        return nullptr;
    const auto* data = object->if_contains("data");
    return data == nullptr ? nullptr : data->if_object();
}

} // namespace

std::vector<CatalogueEntry> parseCatalogue(std::string_view data) {
    const auto body = parseJson(data);
    const auto* list = jsonObject(body).if_contains("data");
    if (list == nullptr) throwMissingKey("data");
    const auto& array = jsonArray(*list);
    std::vector<CatalogueEntry> entries;
    entries.reserve(array.size());
    for (const auto& entry : array) {
        if (entry.is_object()) entries.push_back(decodeJson<CatalogueEntry>(entry));
    }
    return entries;
}

IdsByName idsByName(std::vector<CatalogueEntry> entries) {
    IdsByName ids;
    ids.reserve(entries.size());
    for (auto& entry : entries)
        ids.insert_or_assign(std::move(entry.name), entry.id);
    return ids;
}

DatarefUpdate parseDatarefUpdate(std::string text) {
    DatarefUpdate update;
    try {
        const auto message = parseJson(wellFormedUtf8(std::move(text)), NonFinite::kept);
        const auto* data = updateData(message);
        if (data == nullptr) return update;
        for (const auto& [key, value] : *data)
            addEntry(update, key, value);
    } catch (const JsonError&) {
        // The simulator sends the next update in a tenth of a second: nothing is gained by failing on this
        // one.
    }
    return update;
}

std::optional<std::int64_t> parseDecimalInteger(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

} // namespace tarnly
