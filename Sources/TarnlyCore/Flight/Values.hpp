#pragma once

#include <chrono>
#include <string>
#include <variant>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// The small values that records of a flight are made of. Plain values.
namespace tarnly {

/// A position in degrees.
struct Coordinate {
    double latitude = 0;
    double longitude = 0;

    bool operator==(const Coordinate&) const = default;
};

/// A point in time, however far away; on the wire the seconds, with fraction, since 2001-01-01 00:00:00 UTC.
struct Date {
    std::chrono::sys_time<std::chrono::duration<double>> time;

    bool operator==(const Date&) const = default;

    void writeJson(JsonWriter& writer) const;
    static Date readJson(const boost::json::value& json);
};

/// A JSON scalar, such as a value of a trigger's condition or action. An empty state is null.
struct JsonScalar {
    std::variant<std::monostate, std::string, double, bool> scalar;

    bool operator==(const JsonScalar&) const = default;

    void writeJson(JsonWriter& writer) const;
    /// Throws `JsonError` "unsupported JSON value" for an object or an array.
    static JsonScalar readJson(const boost::json::value& json);
};

} // namespace tarnly
