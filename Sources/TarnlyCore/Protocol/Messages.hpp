#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TarnlyPlatform/Json/JsonRecord.hpp"

/// The wire vocabulary: every message is one JSON object in one text frame.
namespace tarnly {

/// The wire strings, in the order in which a session tests them.
namespace MessageType {
inline constexpr std::string_view pair = "pair";
inline constexpr std::string_view simInfo = "sim_info";
inline constexpr std::string_view listFlights = "list_flights";
inline constexpr std::string_view loadFlight = "load_flight";
inline constexpr std::string_view loadScript = "load_script";
inline constexpr std::string_view recordingStart = "recording_start";
inline constexpr std::string_view recordingStop = "recording_stop";
inline constexpr std::string_view catchUp = "catch_up";
inline constexpr std::string_view datarefSubscribeValues = "dataref_subscribe_values";
inline constexpr std::string_view datarefSetValues = "dataref_set_values";
inline constexpr std::string_view runCommand = "run_command";
inline constexpr std::string_view moveToPreservingAgl = "move_to_preserving_agl";
inline constexpr std::string_view applyAttitude = "apply_attitude";
} // namespace MessageType

/// The part of a request that picks the handler.
struct TypeOnly {
    std::string type;
    std::optional<std::int64_t> reqId;

    static constexpr auto fields() {
        return std::tuple(field("type", &TypeOnly::type), field("req_id", &TypeOnly::reqId));
    }
};

/// The part of a request that carries its parameters, of the record `Params`.
template <typename Params>
struct Envelope {
    std::optional<Params> params;

    static constexpr auto fields() { return std::tuple(field("params", &Envelope::params)); }
};

/// What the companion sends. Pushes carry no `reqId`.
template <typename Data>
struct ResponseEnvelope {
    std::string type;
    std::optional<std::int64_t> reqId;
    Data data;

    static constexpr auto fields() {
        return std::tuple(field("type", &ResponseEnvelope::type), field("req_id", &ResponseEnvelope::reqId),
                          field("data", &ResponseEnvelope::data));
    }
};

/// A point in time; on the wire the seconds, with fraction, since 2001-01-01 00:00:00 UTC.
struct Date {
    std::chrono::sys_time<std::chrono::nanoseconds> time;

    bool operator==(const Date&) const = default;

    void writeJson(JsonWriter& writer) const;
    static Date readJson(const boost::json::value& json);
};

/// A JSON scalar: the values of a trigger's condition and action. An empty state is null.
struct JSONValue {
    std::variant<std::monostate, std::string, double, bool> scalar;

    bool operator==(const JSONValue&) const = default;

    void writeJson(JsonWriter& writer) const;
    /// Throws `JsonError` "unsupported JSON value" for an object or an array.
    static JSONValue readJson(const boost::json::value& json);
};

struct ErrorPayload {
    std::string message;

    bool operator==(const ErrorPayload&) const = default;
    static constexpr auto fields() { return std::tuple(field("message", &ErrorPayload::message)); }
};

struct OkPayload {
    bool ok = true;

    bool operator==(const OkPayload&) const = default;
    static constexpr auto fields() { return std::tuple(field("ok", &OkPayload::ok)); }
};

struct PairRequest {
    std::optional<std::string> password;

    bool operator==(const PairRequest&) const = default;
    static constexpr auto fields() { return std::tuple(field("password", &PairRequest::password)); }
};

struct PairResponse {
    bool accepted = false;
    std::optional<std::string> sessionToken;
    std::optional<std::string> reason;

    bool operator==(const PairResponse&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("accepted", &PairResponse::accepted),
                          field("session_token", &PairResponse::sessionToken),
                          field("reason", &PairResponse::reason));
    }
};

struct SimInfo {
    std::string sim;
    std::string version;

    bool operator==(const SimInfo&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("sim", &SimInfo::sim), field("version", &SimInfo::version));
    }
};

/// A saved flight. `path` is opaque to the client, which hands it back to load the flight.
struct FlightListing {
    std::string name;
    std::string path;
    Date modifiedAt;

    bool operator==(const FlightListing&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("name", &FlightListing::name), field("path", &FlightListing::path),
                          field("modified_at", &FlightListing::modifiedAt));
    }
};

struct FlightsPayload {
    std::vector<FlightListing> flights;

    bool operator==(const FlightsPayload&) const = default;
    static constexpr auto fields() { return std::tuple(field("flights", &FlightsPayload::flights)); }
};

struct LoadFlightRequest {
    std::string path;

    bool operator==(const LoadFlightRequest&) const = default;
    static constexpr auto fields() { return std::tuple(field("path", &LoadFlightRequest::path)); }
};

struct RunCommandRequest {
    std::string name;

    bool operator==(const RunCommandRequest&) const = default;
    static constexpr auto fields() { return std::tuple(field("name", &RunCommandRequest::name)); }
};

/// A position in degrees.
struct MoveToPreservingAglRequest {
    double lat = 0;
    double lon = 0;

    bool operator==(const MoveToPreservingAglRequest&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("lat", &MoveToPreservingAglRequest::lat),
                          field("lon", &MoveToPreservingAglRequest::lon));
    }
};

/// Degrees, degrees, knots and a ratio.
struct ApplyAttitudeRequest {
    double pitchDeg = 0;
    double bankDeg = 0;
    double iasKts = 0;
    double throttle = 0;

    bool operator==(const ApplyAttitudeRequest&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("pitch_deg", &ApplyAttitudeRequest::pitchDeg),
                          field("bank_deg", &ApplyAttitudeRequest::bankDeg),
                          field("ias_kts", &ApplyAttitudeRequest::iasKts),
                          field("throttle", &ApplyAttitudeRequest::throttle));
    }
};

/// One trigger of a script as the client sends it: a condition on the flight, and an action that the client
/// interprets.
struct ScriptTrigger {
    std::string id;
    std::string conditionKind;
    std::map<std::string, JSONValue> condition;
    std::string actionKind;
    std::map<std::string, JSONValue> action;

    bool operator==(const ScriptTrigger&) const = default;
    static constexpr auto fields() {
        return std::tuple(
            field("id", &ScriptTrigger::id), field("condition_kind", &ScriptTrigger::conditionKind),
            field("condition", &ScriptTrigger::condition), field("action_kind", &ScriptTrigger::actionKind),
            field("action", &ScriptTrigger::action));
    }
};

struct LoadScriptRequest {
    std::vector<ScriptTrigger> triggers;

    bool operator==(const LoadScriptRequest&) const = default;
    static constexpr auto fields() { return std::tuple(field("triggers", &LoadScriptRequest::triggers)); }
};

struct UnresolvedFixesPayload {
    std::vector<std::string> unresolvedFixes;

    bool operator==(const UnresolvedFixesPayload&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("unresolved_fixes", &UnresolvedFixesPayload::unresolvedFixes));
    }
};

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

struct CatchUpRequest {
    std::optional<double> sinceElapsedSeconds;

    bool operator==(const CatchUpRequest&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("since_elapsed_s", &CatchUpRequest::sinceElapsedSeconds));
    }
};

struct CatchUpResponse {
    std::vector<TrackSample> samples;
    std::vector<FiredTriggerEvent> fired;

    bool operator==(const CatchUpResponse&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("samples", &CatchUpResponse::samples),
                          field("fired", &CatchUpResponse::fired));
    }
};

struct DatarefName {
    std::string name;

    bool operator==(const DatarefName&) const = default;
    static constexpr auto fields() { return std::tuple(field("name", &DatarefName::name)); }
};

struct DatarefNamesParams {
    std::vector<DatarefName> datarefs;

    bool operator==(const DatarefNamesParams&) const = default;
    static constexpr auto fields() { return std::tuple(field("datarefs", &DatarefNamesParams::datarefs)); }
};

/// `index` names one element of an array dataref.
struct DatarefSetEntry {
    std::string name;
    double value = 0;
    std::optional<std::int64_t> index;

    bool operator==(const DatarefSetEntry&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("name", &DatarefSetEntry::name), field("value", &DatarefSetEntry::value),
                          field("index", &DatarefSetEntry::index));
    }
};

struct DatarefSetParams {
    std::vector<DatarefSetEntry> datarefs;

    bool operator==(const DatarefSetParams&) const = default;
    static constexpr auto fields() { return std::tuple(field("datarefs", &DatarefSetParams::datarefs)); }
};

} // namespace tarnly
