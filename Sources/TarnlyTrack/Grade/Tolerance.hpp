#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// How well a flight is to be flown: what docs/tracks.md describes for people. Plain values.
namespace tarnly::track {

/// What is asked of the flight.
enum class ToleranceKind : std::uint8_t { altitudeHeld, heightHeld, bankNotExceeded, stableAt, timeBetween };

/// By kind; as they stand in a file.
constexpr std::array<std::string_view, 5> toleranceKindNames{
    "altitude_held", "height_held", "bank_not_exceeded", "stable_at", "time_between"};

/// One demand on the flight. What a kind does not need is absent.
struct Tolerance {
    std::string id;
    /// What people read; the id where it is absent.
    std::optional<std::string> name{};
    /// One of `toleranceKindNames`.
    std::string kind;
    /// Triggers by whose firing the part of the flight that counts begins and ends; with their delays where
    /// seconds stand beside them.
    std::optional<std::string> from{};
    std::optional<std::string> to{};
    /// Seconds of the recording's clock, or after `from` and `to`.
    std::optional<double> fromSeconds{};
    std::optional<double> toSeconds{};
    /// The altitude (indicated), or the height above ground.
    std::optional<double> feet{};
    /// How far from it is permitted, up and down.
    std::optional<double> withinFeet{};
    /// The steepest bank, to either side.
    std::optional<double> bankDegrees{};
    std::optional<double> leastPitchDegrees{};
    std::optional<double> mostPitchDegrees{};
    /// The fastest descent, feet a minute, derived from the indicated altitude.
    std::optional<double> mostDescent{};
    std::optional<bool> gearDown{};
    std::optional<double> leastFlapRatio{};
    std::optional<double> atLeastSeconds{};
    std::optional<double> atMostSeconds{};

    const std::string& title() const { return name ? *name : id; }

    bool operator==(const Tolerance&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("id", &Tolerance::id), field("name", &Tolerance::name), field("kind", &Tolerance::kind),
            field("from", &Tolerance::from), field("to", &Tolerance::to),
            field("from_s", &Tolerance::fromSeconds), field("to_s", &Tolerance::toSeconds),
            field("feet", &Tolerance::feet), field("within_ft", &Tolerance::withinFeet),
            field("bank_deg", &Tolerance::bankDegrees),
            field("pitch_at_least_deg", &Tolerance::leastPitchDegrees),
            field("pitch_at_most_deg", &Tolerance::mostPitchDegrees),
            field("descent_fpm", &Tolerance::mostDescent), field("gear_down", &Tolerance::gearDown),
            field("flap_ratio", &Tolerance::leastFlapRatio), field("at_least_s", &Tolerance::atLeastSeconds),
            field("at_most_s", &Tolerance::atMostSeconds));
    }
};

/// A file of tolerances.
struct Tolerances {
    std::vector<Tolerance> tolerances;

    bool operator==(const Tolerances&) const = default;
    static constexpr auto fields() { return std::tuple(field("tolerances", &Tolerances::tolerances)); }
};

} // namespace tarnly::track
