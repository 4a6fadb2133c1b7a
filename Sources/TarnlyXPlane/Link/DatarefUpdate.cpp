#include "TarnlyXPlane/Link/DatarefUpdate.hpp"

#include <boost/json/value.hpp>
#include <cmath>
#include <optional>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyXPlane/Link/DecimalInteger.hpp"

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
    if (type == nullptr || !type->is_string() || type->get_string() != "dataref_update_values")
        return nullptr;
    const auto* data = object->if_contains("data");
    return data == nullptr ? nullptr : data->if_object();
}

} // namespace

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

} // namespace tarnly
