#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Flight/Values.hpp"
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
    std::map<std::string, JsonScalar> condition;
    std::string actionKind;
    std::map<std::string, JsonScalar> action;

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

struct CatchUpRequest {
    std::optional<double> sinceElapsedSeconds;

    bool operator==(const CatchUpRequest&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("since_elapsed_s", &CatchUpRequest::sinceElapsedSeconds));
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
