#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// What a recording is made of: the same records in memory, in the log and on the wire. Plain values.
namespace tarnly {

/// One sampled aircraft state, also a line of the recording log. Angles in degrees, heights in feet, ratios 0
/// to 1, arrays with one element an engine.
struct TrackSample {
    /// Seconds since the sampling clock started.
    double elapsedSeconds = 0;
    std::optional<double> lat;
    std::optional<double> lon;
    double altitudeFt = 0;
    std::optional<double> aglFt;
    /// The handle.
    std::optional<bool> gearDown;
    std::optional<std::vector<double>> throttleRatio;
    std::optional<std::vector<double>> mixtureRatio;
    std::optional<std::vector<double>> propRatio;
    /// The handle.
    std::optional<double> flapRatio;
    /// How far the gear is out.
    std::optional<double> gearRatio;
    std::optional<double> bankDeg;
    std::optional<double> pitchDeg;
    std::optional<bool> autopilotOn;

    bool operator==(const TrackSample&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("elapsed_s", &TrackSample::elapsedSeconds), field("lat", &TrackSample::lat),
            field("lon", &TrackSample::lon), field("alt_ft", &TrackSample::altitudeFt),
            field("agl_ft", &TrackSample::aglFt), field("gear_down", &TrackSample::gearDown),
            field("throttle_ratio", &TrackSample::throttleRatio),
            field("mixture_ratio", &TrackSample::mixtureRatio), field("prop_ratio", &TrackSample::propRatio),
            field("flap_ratio", &TrackSample::flapRatio), field("gear_ratio", &TrackSample::gearRatio),
            field("bank_deg", &TrackSample::bankDeg), field("pitch_deg", &TrackSample::pitchDeg),
            field("autopilot_on", &TrackSample::autopilotOn));
    }
};

/// The wire and log form of a trigger that fired.
struct FiredTriggerEvent {
    std::string triggerId;
    double elapsedSeconds = 0;
    std::string actionKind;

    bool operator==(const FiredTriggerEvent&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("trigger_id", &FiredTriggerEvent::triggerId),
                          field("elapsed_s", &FiredTriggerEvent::elapsedSeconds),
                          field("action_kind", &FiredTriggerEvent::actionKind));
    }
};

/// A stretch of a recording, in the order of recording.
struct RecordedFlight {
    std::vector<TrackSample> samples;
    std::vector<FiredTriggerEvent> fired;

    bool operator==(const RecordedFlight&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("samples", &RecordedFlight::samples), field("fired", &RecordedFlight::fired));
    }
};

} // namespace tarnly
