#include "TarnlyPlatform/Json/JsonRecord.hpp"

#include <cmath>

namespace tarnly {
namespace {

[[noreturn]] void throwWrongKind(const char* expected) {
    throw JsonError(std::string("expected ") + expected);
}

} // namespace

void writeJson(JsonWriter& writer, bool value) { writer.boolean(value); }
void writeJson(JsonWriter& writer, std::int64_t value) { writer.integer(value); }
void writeJson(JsonWriter& writer, double value) { writer.number(value); }
void writeJson(JsonWriter& writer, const std::string& value) { writer.string(value); }

void readJson(const boost::json::value& json, bool& value) {
    if (!json.is_bool()) throwWrongKind("a boolean");
    value = json.get_bool();
}

void readJson(const boost::json::value& json, std::int64_t& value) {
    const bool isMinusZero = json.is_double() && json.get_double() == 0 && std::signbit(json.get_double());
    if (!json.is_int64() && !isMinusZero) throwWrongKind("an integer");
    value = isMinusZero ? 0 : json.get_int64();
}

void readJson(const boost::json::value& json, double& value) {
    if (!json.is_number()) throwWrongKind("a number");
    value = json.to_number<double>();
}

void readJson(const boost::json::value& json, std::string& value) {
    if (!json.is_string()) throwWrongKind("a string");
    const auto& text = json.get_string();
    value.assign(text.data(), text.size());
}

const boost::json::array& jsonArray(const boost::json::value& json) {
    if (!json.is_array()) throwWrongKind("an array");
    return json.get_array();
}

const boost::json::object& jsonObject(const boost::json::value& json) {
    if (!json.is_object()) throwWrongKind("an object");
    return json.get_object();
}

void throwMissingKey(std::string_view key) { throw JsonError("missing key \"" + std::string(key) + "\""); }

} // namespace tarnly
