#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly {

/// One line of a recording's log: a sample or a fired trigger, told apart by `kind`. A plain value.
struct LogLine {
    static constexpr std::string_view sampleKind = "sample";
    static constexpr std::string_view firedKind = "fired";

    std::string kind;
    std::optional<TrackSample> sample;
    std::optional<FiredTriggerEvent> fired;

    static LogLine of(TrackSample sample);
    static LogLine of(FiredTriggerEvent event);

    /// Whether the line holds the record that its kind promises. Of a kind unknown here nothing is asked.
    bool isComplete() const;

    bool operator==(const LogLine&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("kind", &LogLine::kind), field("sample", &LogLine::sample),
                          field("fired", &LogLine::fired));
    }
};

} // namespace tarnly
