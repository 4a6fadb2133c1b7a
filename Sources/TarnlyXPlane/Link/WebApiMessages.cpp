#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonText.hpp"

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
        if (!numbers) {
            update.notNumbers.insert(*id);
            return;
        }
        update.arrayValues.insert_or_assign(*id, std::move(*numbers));
        return;
    }
    const auto number = finiteNumber(value);
    if (number) {
        update.values.insert_or_assign(*id, *number);
    } else {
        update.notNumbers.insert(*id);
    }
}

/// The object's member, or null where it has none, or is no object.
const json::value* memberOf(const json::value& message, std::string_view key) {
    const auto* object = message.if_object();
    return object == nullptr ? nullptr : object->if_contains(key);
}

bool hasType(const json::value& message, std::string_view type) {
    const auto* found = memberOf(message, "type");
    return found != nullptr && found->is_string() && found->get_string() == type;
}

DatarefUpdate updateIn(const json::value& message) {
    DatarefUpdate update;
    const auto* data = memberOf(message, "data");
    if (data == nullptr || !data->is_object()) return update;
    for (const auto& [key, value] : data->get_object())
        addEntry(update, key, value);
    return update;
}

std::optional<WebApiResult> resultIn(const json::value& message) {
    const auto* reqId = memberOf(message, "req_id");
    const auto* success = memberOf(message, "success");
    if (reqId == nullptr || success == nullptr || !reqId->is_int64() || !success->is_bool()) return {};
    return WebApiResult{reqId->get_int64(), success->get_bool()};
}

/// The body as JSON; null for what is none.
json::value bodyOf(const std::string& body) {
    try {
        return parseJson(wellFormedUtf8(body), NonFinite::kept);
    } catch (const JsonError&) {
        return nullptr;
    }
}

/// What people are shown of a text from the simulator, in bytes.
constexpr std::size_t longestShown = 200;

/// What is shown of a longer text, which is well-formed: no half character at its end.
std::string beginningOf(const std::string& text) {
    const auto isInsideCharacter = [&](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    };
    auto size = longestShown;
    while (size > 0 && isInsideCharacter(size))
        --size;
    return text.substr(0, size);
}

/// A catalogue around its entries.
struct CatalogueBody {
    std::vector<CatalogueEntry> data;

    static constexpr auto fields() { return std::tuple(field("data", &CatalogueBody::data)); }
};

/// Takes a catalogue's entries as they are read: of a catalogue of many megabytes nothing else is kept.
class CatalogueReader final : public JsonElements {
  public:
    void restart() override { ids_.clear(); }

    void add(const json::value& element) override {
        if (!element.is_object()) return;
        try {
            auto entry = decodeJson<CatalogueEntry>(element);
            ids_.insert_or_assign(std::move(entry.name), entry.id);
        } catch (const JsonError&) {
            // The others are none the worse.
        }
    }

    IdsByName take() { return std::move(ids_); }

  private:
    IdsByName ids_;
};

} // namespace

bool DatarefUpdate::hasAny(std::span<const std::int64_t> ids) const {
    return std::ranges::any_of(
        ids, [this](std::int64_t id) { return values.contains(id) || arrayValues.contains(id); });
}

IdsByName parseCatalogue(std::string data) {
    CatalogueReader reader;
    const auto text = wellFormedUtf8(std::move(data));
    const auto body = parseJson(text, ShapeOf<CatalogueBody>::shape, &reader, {}, NonFinite::kept);
    decodeJson<CatalogueBody>(body);
    return reader.take();
}

WebApiMessage parseWebApiMessage(std::string text) {
    WebApiMessage read;
    try {
        const auto message = parseJson(wellFormedUtf8(std::move(text)), NonFinite::kept);
        if (hasType(message, WebApiType::updateValues)) read.update = updateIn(message);
        if (hasType(message, WebApiType::result)) read.result = resultIn(message);
    } catch (const JsonError&) {
        // The simulator sends the next update in a tenth of a second: nothing is gained by failing on this
        // one.
    }
    return read;
}

DatarefUpdate parseDatarefUpdate(std::string text) { return parseWebApiMessage(std::move(text)).update; }

std::string errorMessageOf(const std::string& body) {
    const auto json = bodyOf(body);
    const auto* found = memberOf(json, "error_message");
    if (found == nullptr || !found->is_string()) return {};
    std::string message(found->get_string());
    if (message.size() > longestShown) message = beginningOf(message) + "…";
    std::ranges::replace_if(
        message, [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    while (message.ends_with('.') || message.ends_with(' '))
        message.pop_back();
    return message;
}

std::optional<std::string> simulatorVersionIn(const std::string& body) {
    const auto json = bodyOf(body);
    const auto* simulator = memberOf(json, "x-plane");
    const auto* version = simulator == nullptr ? nullptr : memberOf(*simulator, "version");
    if (version == nullptr || !version->is_string() || version->get_string().empty()) return std::nullopt;
    return std::string(version->get_string());
}

std::optional<double> valueIn(const std::string& body) {
    const auto json = bodyOf(body);
    const auto* data = memberOf(json, "data");
    return data == nullptr ? std::nullopt : finiteNumber(*data);
}

std::optional<std::int64_t> countIn(const std::string& body) {
    const auto json = bodyOf(body);
    const auto* data = memberOf(json, "data");
    if (data == nullptr || !data->is_int64()) return std::nullopt;
    return data->get_int64();
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
