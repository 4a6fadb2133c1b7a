#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "TarnlyCore/Flight/TrackSample.hpp"

/// A sample on its way from a line of the log into the columns of a `FlightLog`. Plain values.
namespace tarnly::track {

/// The numbers of a sample, in the order of the table of fields. Seconds, degrees, feet, ratios.
enum class Quantity {
    elapsedSeconds,
    lat,
    lon,
    /// Indicated.
    altitudeFt,
    aglFt,
    flapRatio,
    gearRatio,
    bankDeg,
    pitchDeg
};
constexpr std::size_t quantityCount = 9;

/// What is on or off, likewise.
enum class Switch { gearDown, autopilotOn };
constexpr std::size_t switchCount = 2;

/// What each engine has of its own, likewise.
enum class Lever { throttle, mixture, prop };
constexpr std::size_t leverCount = 3;

/// Stands for a number that is not known. A log has no such number: JSON cannot write it.
constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

struct LogSample {
    /// By `Quantity`; `unknown` where the line has none.
    std::array<double, quantityCount> numbers{};
    /// By `Switch`.
    std::array<std::optional<bool>, switchCount> switches{};
    /// By `Lever`; meaningless where `hasLever` is false.
    std::array<std::vector<double>, leverCount> levers{};
    std::array<bool, leverCount> hasLever{};

    /// Nothing is known any more; the lists keep their memory.
    void clear() {
        numbers.fill(unknown);
        switches.fill(std::nullopt);
        hasLever.fill(false);
    }
};

/// Where the value of a key belongs.
struct FieldPlace {
    enum class Kind { number, boolean, list };

    std::string_view key;
    Kind kind = Kind::number;
    /// Among those of its kind.
    std::size_t index = 0;
};

namespace detail {

template <typename T>
constexpr FieldPlace::Kind kindOf = FieldPlace::Kind::number;
template <>
inline constexpr FieldPlace::Kind kindOf<std::optional<bool>> = FieldPlace::Kind::boolean;
template <>
inline constexpr FieldPlace::Kind kindOf<std::optional<std::vector<double>>> = FieldPlace::Kind::list;

template <typename Member>
constexpr FieldPlace nextPlace(const Field<TrackSample, Member>& field, std::array<std::size_t, 3>& counts) {
    static_assert(kindOf<Member> != FieldPlace::Kind::number || std::is_same_v<Member, double> ||
                      std::is_same_v<Member, std::optional<double>>,
                  "a recorded field of this type has no column yet");
    return {field.key, kindOf<Member>, counts[static_cast<std::size_t>(kindOf<Member>)]++};
}

constexpr auto placesOfFields() {
    return std::apply(
        [](const auto&... fields) {
            std::array<std::size_t, 3> counts{};
            // In braces they are taken from left to right.
            return std::array{nextPlace(fields, counts)...};
        },
        fieldsOf<TrackSample>());
}

} // namespace detail

/// The fields of a sample, in the order in which the companion writes them.
constexpr auto fieldPlaces = detail::placesOfFields();
static_assert(fieldPlaces.size() == quantityCount + switchCount + leverCount,
              "a recorded field has no column yet");

} // namespace tarnly::track
