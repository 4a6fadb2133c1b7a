#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <boost/type_index.hpp>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly {

/// The JSON Schema of a type that has a JSON form of its own (`JsonCustom`): specialize it with a function
/// `static boost::json::object schema()`.
template <typename T>
struct CustomJsonSchema;

/// Says in JSON Schema (draft 2020-12) what records look like, by the tables of their fields. Each record is
/// a definition by its own name without namespaces. A plain value, for tools: nothing here is fast.
class JsonSchema {
  public:
    /// Null stands for an optional field that is absent where records are read, and is never written.
    enum class Use : std::uint8_t { read, written };

    /// The schema of a value, which refers to definitions of the records in it. A record is used in one way
    /// alone, unless it has no optional fields.
    template <typename T>
    boost::json::object of(Use use);

    /// Of all records so far, by name.
    const boost::json::object& definitions() const { return definitions_; }

    static boost::json::object reference(std::string_view definition);

  private:
    template <typename T>
    void define(std::string_view name, Use use);
    template <typename T>
    void addField(boost::json::object& record, std::string_view key, Use use, bool isRequired);

    static boost::json::object ofType(std::string_view type) { return {{"type", type}}; }
    static void permitNull(boost::json::object& schema);

    boost::json::object definitions_;
};

/// The name of a type without its namespaces.
template <typename T>
std::string schemaName() {
    const auto whole = boost::typeindex::type_id<T>().pretty_name();
    const auto colon = whole.rfind(':');
    return colon == std::string::npos ? whole : whole.substr(colon + 1);
}

template <typename T>
constexpr bool isList = false;
template <typename T>
constexpr bool isList<std::vector<T>> = true;
template <typename T>
constexpr bool isMap = false;
template <typename T>
constexpr bool isMap<std::map<std::string, T>> = true;

template <typename T>
boost::json::object JsonSchema::of(Use use) {
    if constexpr (std::is_same_v<T, bool>) {
        return ofType("boolean");
    } else if constexpr (std::is_same_v<T, std::int64_t>) {
        return ofType("integer");
    } else if constexpr (std::is_same_v<T, double>) {
        return ofType("number");
    } else if constexpr (std::is_same_v<T, std::string>) {
        return ofType("string");
    } else if constexpr (isList<T>) {
        auto schema = ofType("array");
        schema["items"] = of<typename T::value_type>(use);
        return schema;
    } else if constexpr (isMap<T>) {
        auto schema = ofType("object");
        schema["additionalProperties"] = of<typename T::mapped_type>(use);
        return schema;
    } else if constexpr (JsonCustom<T>) {
        return CustomJsonSchema<T>::schema();
    } else {
        const auto name = schemaName<T>();
        define<T>(name, use);
        return reference(name);
    }
}

template <typename T>
void JsonSchema::define(std::string_view name, Use use) {
    if (definitions_.contains(name)) return;
    definitions_[name] = nullptr; // keeps the order of mention
    boost::json::object record{{"type", "object"}, {"properties", boost::json::object()}};
    std::apply(
        [&](const auto&... fields) {
            (addField<std::decay_t<decltype(T().*fields.member)>>(
                 record, fields.key, use, use == Use::written || !requires { fields.whenMissing; }),
             ...);
        },
        fieldsOf<T>());
    definitions_[name] = std::move(record);
}

template <typename T>
void JsonSchema::addField(boost::json::object& record, std::string_view key, Use use, bool isRequired) {
    auto& properties = record["properties"].as_object();
    if constexpr (isOptional<T>) {
        auto schema = of<typename T::value_type>(use);
        if (use == Use::read) permitNull(schema);
        properties[key] = std::move(schema);
    } else {
        properties[key] = of<T>(use);
        if (!isRequired) return;
        auto& required = record["required"];
        if (required.is_null()) required = boost::json::array();
        required.as_array().emplace_back(key);
    }
}

} // namespace tarnly
