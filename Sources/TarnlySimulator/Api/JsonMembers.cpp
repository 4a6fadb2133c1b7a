#include "TarnlySimulator/Api/JsonMembers.hpp"

#include <string>

#include "TarnlySimulator/Api/ApiError.hpp"

namespace tarnly::simulator {
namespace {

[[noreturn]] void refuse(std::string_view key, const char* kind) {
    throw ApiError(400, "invalid_body", "The key " + std::string(key) + " needs " + kind + ".");
}

} // namespace

const boost::json::object& objectFrom(const boost::json::value& json) {
    if (const auto* object = json.if_object()) return *object;
    throw ApiError(400, "invalid_body", "An object was expected.");
}

const boost::json::value& member(const boost::json::object& object, std::string_view key) {
    if (const auto* value = object.if_contains(key)) return *value;
    refuse(key, "a value");
}

const boost::json::array& arrayMember(const boost::json::object& object, std::string_view key) {
    if (const auto* array = member(object, key).if_array()) return *array;
    refuse(key, "an array");
}

std::string_view stringMember(const boost::json::object& object, std::string_view key) {
    if (const auto* text = member(object, key).if_string()) return {text->data(), text->size()};
    refuse(key, "a text");
}

std::int64_t integerMember(const boost::json::object& object, std::string_view key) {
    const auto& value = member(object, key);
    if (value.is_int64()) return value.get_int64();
    refuse(key, "an integer");
}

bool boolMember(const boost::json::object& object, std::string_view key) {
    const auto& value = member(object, key);
    if (value.is_bool()) return value.get_bool();
    refuse(key, "true or false");
}

void checkDuration(const boost::json::value& json) {
    constexpr double longestS = 10;
    const double seconds = json.is_number() ? json.to_number<double>() : -1;
    if (!(seconds >= 0 && seconds <= longestS))
        throw ApiError(400, "invalid_duration", "A duration is a number of seconds from 0 to 10.");
}

} // namespace tarnly::simulator
