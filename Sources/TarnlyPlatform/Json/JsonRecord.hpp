#pragma once

#include <boost/json/value.hpp>
#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Json/JsonWriter.hpp"

/// Coding of records as JSON objects.
///
/// A record declares its fields once, in the order in which they are written:
///
///     struct Waypoint {
///         std::string ident;
///         std::optional<double> altitudeFt;
///
///         static constexpr auto fields() {
///             return std::tuple(field("ident", &Waypoint::ident), field("alt_ft", &Waypoint::altitudeFt));
///         }
///     };
///
/// An optional field is left out when absent; on reading, a missing key or null leaves it absent. Every other
/// field is required, unless it says what a missing key means: `field("leg", &Waypoint::leg, 1)`. So a record
/// that is kept in a file grows: what an older version has written is read still. Null is no missing key
/// there.
///
/// There is no coercion between kinds, except that an Int field takes any integral number
/// in the 64-bit range (7.0 and 1e2 are integral) and a Double field any number. Unknown keys are ignored.
namespace tarnly {

template <typename Record, typename Member>
struct Field {
    std::string_view key;
    Member Record::*member;
};

template <typename Record, typename Member>
constexpr Field<Record, Member> field(std::string_view key, Member Record::*member) {
    return {key, member};
}

template <typename T>
constexpr bool isOptional = false;
template <typename T>
constexpr bool isOptional<std::optional<T>> = true;

template <typename Record, typename Member>
struct DefaultedField : Field<Record, Member> {
    Member whenMissing;
};

/// Not for an optional field: one that is absent would be written as nothing, and come back as the default.
template <typename Record, typename Member>
requires(!isOptional<Member>) constexpr DefaultedField<Record, Member> field(
    std::string_view key, Member Record::*member, std::type_identity_t<Member> whenMissing) {
    return {{key, member}, std::move(whenMissing)};
}

template <typename T>
concept JsonRecord = requires {
    T::fields();
};

/// A type with a JSON form of its own.
template <typename T>
concept JsonCustom = requires(JsonWriter& writer, const boost::json::value& json, const T& value) {
    value.writeJson(writer);
    { T::readJson(json) } -> std::same_as<T>;
};

/// Stands for a value of any type.
struct AnyValue {
    template <typename T>
    operator T() const;
};

/// How many members a record has: as many as it can be initialized with.
template <typename Record, typename... Values>
consteval std::size_t memberCount() {
    if constexpr (requires { Record{std::declval<Values>()..., std::declval<AnyValue>()}; }) {
        return memberCount<Record, Values..., AnyValue>();
    } else {
        return sizeof...(Values);
    }
}

/// The table of a record's fields, in which no member is forgotten.
template <JsonRecord Record>
constexpr auto fieldsOf() {
    static_assert(std::tuple_size_v<decltype(Record::fields())> == memberCount<Record>(),
                  "a member of the record is missing in its table of fields");
    return Record::fields();
}

// Writing

void writeJson(JsonWriter& writer, bool value);
void writeJson(JsonWriter& writer, std::int64_t value);
void writeJson(JsonWriter& writer, double value);
void writeJson(JsonWriter& writer, const std::string& value);
template <typename T>
void writeJson(JsonWriter& writer, const std::vector<T>& values);
template <typename T>
void writeJson(JsonWriter& writer, const std::map<std::string, T>& values);
template <JsonRecord T>
void writeJson(JsonWriter& writer, const T& record);

template <JsonCustom T>
void writeJson(JsonWriter& writer, const T& value) {
    value.writeJson(writer);
}

template <typename T>
void writeJson(JsonWriter& writer, const std::vector<T>& values) {
    writer.beginArray();
    for (const T& value : values)
        writeJson(writer, value);
    writer.endArray();
}

template <typename T>
void writeJson(JsonWriter& writer, const std::map<std::string, T>& values) {
    writer.beginObject();
    for (const auto& [key, value] : values) {
        writer.key(key);
        writeJson(writer, value);
    }
    writer.endObject();
}

template <typename T>
void writeField(JsonWriter& writer, std::string_view key, const T& value) {
    writer.key(key);
    writeJson(writer, value);
}

template <typename T>
void writeField(JsonWriter& writer, std::string_view key, const std::optional<T>& value) {
    if (value) writeField(writer, key, *value);
}

template <JsonRecord T>
void writeJson(JsonWriter& writer, const T& record) {
    writer.beginObject();
    std::apply([&](const auto&... fields) { (writeField(writer, fields.key, record.*fields.member), ...); },
               fieldsOf<T>());
    writer.endObject();
}

/// Throws `JsonError` when the value holds a number that is not finite.
template <typename T>
std::string encodeJson(const T& value) {
    constexpr std::size_t usual = 256;
    JsonWriter writer(usual);
    writeJson(writer, value);
    return writer.take();
}

// Reading

void readJson(const boost::json::value& json, bool& value);
void readJson(const boost::json::value& json, std::int64_t& value);
void readJson(const boost::json::value& json, double& value);
void readJson(const boost::json::value& json, std::string& value);
const boost::json::array& jsonArray(const boost::json::value& json);
const boost::json::object& jsonObject(const boost::json::value& json);
[[noreturn]] void throwMissingKey(std::string_view key);

template <typename T>
void readJson(const boost::json::value& json, std::vector<T>& values);
template <typename T>
void readJson(const boost::json::value& json, std::map<std::string, T>& values);
template <JsonRecord T>
void readJson(const boost::json::value& json, T& record);

template <JsonCustom T>
void readJson(const boost::json::value& json, T& value) {
    value = T::readJson(json);
}

template <typename T>
void readJson(const boost::json::value& json, std::vector<T>& values) {
    const auto& array = jsonArray(json);
    values.clear();
    values.reserve(array.size());
    for (const auto& element : array) {
        T value{};
        readJson(element, value);
        values.push_back(std::move(value));
    }
}

template <typename T>
void readJson(const boost::json::value& json, std::map<std::string, T>& values) {
    values.clear();
    for (const auto& [key, element] : jsonObject(json)) {
        T value{};
        readJson(element, value);
        values.insert_or_assign(std::string(key), std::move(value));
    }
}

template <typename T>
void readField(const boost::json::object& object, std::string_view key, T& value) {
    const auto* json = object.if_contains(key);
    if (json == nullptr) throwMissingKey(key);
    readJson(*json, value);
}

template <typename T>
void readField(const boost::json::object& object, std::string_view key, std::optional<T>& value) {
    value.reset();
    const auto* json = object.if_contains(key);
    if (json == nullptr || json->is_null()) return;
    T present{};
    readJson(*json, present);
    value = std::move(present);
}

template <typename Record, typename Member>
void readMember(const boost::json::object& object, const Field<Record, Member>& field, Record& record) {
    readField(object, field.key, record.*field.member);
}

template <typename Record, typename Member>
void readMember(const boost::json::object& object, const DefaultedField<Record, Member>& field,
                Record& record) {
    if (object.contains(field.key)) {
        readField(object, field.key, record.*field.member);
    } else {
        record.*field.member = field.whenMissing;
    }
}

template <JsonRecord T>
void readJson(const boost::json::value& json, T& record) {
    const auto& object = jsonObject(json);
    std::apply([&](const auto&... fields) { (readMember(object, fields, record), ...); }, fieldsOf<T>());
}

/// Throws `JsonError` when `json` is not a `T`.
template <typename T>
T decodeJson(const boost::json::value& json) {
    T value{};
    readJson(json, value);
    return value;
}

} // namespace tarnly
