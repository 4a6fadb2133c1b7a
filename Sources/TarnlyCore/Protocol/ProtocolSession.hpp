#pragma once

#include <array>
#include <boost/json/value.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyCore/Discovery/PairingManager.hpp"
#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/Script/LoadedScript.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"

namespace tarnly {

/// A session's own failure. Clients receive exactly `what()`: `missingParams("load_flight requires a
/// path")`.
struct ProtocolSessionErrorCases {
    enum class Case { missingParams };
    static constexpr std::array<std::string_view, 1> names{"missingParams"};
};
using ProtocolSessionError = Error<ProtocolSessionErrorCases>;

/// One connection's side of the protocol: text in, text out. Knows no sockets and no clock.
///
/// Lets nothing but "pair" through until the connection has paired, hands requests to the simulator, the
/// recording and the script, and keeps the connection's dataref subscriptions. Owned by the server's
/// table; lives as long as the connection or a task for it.
class ProtocolSession {
  public:
    /// The pools must outlive the session. Scripts have one of their own, because looking up their fixes
    /// may take seconds.
    ProtocolSession(std::shared_ptr<PairingManager> pairing, std::shared_ptr<SimBackend> backend,
                    std::shared_ptr<FlightRecorder> recording, std::shared_ptr<LoadedScript> loadedScript,
                    FixResolver fixResolver, WorkerPool& workers, WorkerPool& scriptWorkers);

    /// Once true it stays true: neither a new password nor a later refused attempt unpairs.
    bool isPaired() const;

    /// The reply to one text frame, in which bytes that are not UTF-8 count as U+FFFD. Absent when the
    /// connection is to be closed without one: an unpaired client learns nothing but the answer to
    /// "pair". Never fails; to be called for one frame at a time.
    Task<std::optional<std::string>> handleMessage(std::string text);

    /// The present values of all subscribed datarefs, or absent when there are none. Throws what the
    /// first read that fails throws. May run beside `handleMessage`.
    Task<std::optional<std::string>> buildSubscriptionPush();

    void addSubscriptions(const std::vector<std::string>& names);

    /// The text of a response; the fixed "failed to encode response" error where `data` cannot be
    /// encoded.
    template <typename Data>
    static std::string respond(std::string_view type, std::optional<std::int64_t> reqId, Data data);

  private:
    struct Request {
        TypeOnly head;
        boost::json::value json;
        /// Of the text, in bytes.
        std::size_t size = 0;
    };
    using Names = std::vector<std::string>;
    using Handler = Task<std::string> (ProtocolSession::*)(const Request&);
    struct Entry {
        std::string_view type;
        Handler handle;
    };
    static const std::vector<Entry>& handlers();

    struct State {
        std::optional<std::string> sessionToken;
        std::set<std::string> subscribedNames;
        /// The same, shared with the pushes under way; null while there are none.
        std::shared_ptr<const Names> namesToPush;
    };

    static std::optional<Request> decode(std::string text);
    Task<std::string> answer(const Request& request);
    Task<std::string> dispatch(const Request& request);
    /// Throws what the first read that fails throws.
    Task<std::string> respondWithValues(std::optional<std::int64_t> reqId,
                                        std::shared_ptr<const Names> names);

    Task<std::string> pair(const Request& request);
    Task<std::string> simInfo(const Request& request);
    Task<std::string> listFlights(const Request& request);
    Task<std::string> loadFlight(const Request& request);
    Task<std::string> loadScript(const Request& request);
    Task<std::string> startRecording(const Request& request);
    Task<std::string> stopRecording(const Request& request);
    Task<std::string> catchUp(const Request& request);
    Task<std::string> subscribeValues(const Request& request);
    Task<std::string> setValues(const Request& request);
    Task<std::string> runCommand(const Request& request);
    Task<std::string> moveToPreservingAgl(const Request& request);
    Task<std::string> applyAttitude(const Request& request);

    const std::shared_ptr<PairingManager> pairing_;
    const std::shared_ptr<SimBackend> backend_;
    const std::shared_ptr<FlightRecorder> recording_;
    const std::shared_ptr<LoadedScript> loadedScript_;
    const FixResolver fixResolver_;
    WorkerPool& workers_;
    WorkerPool& scriptWorkers_;
    Guarded<State> state_;
};

inline constexpr std::string_view failedToEncodeResponse =
    R"({"type":"error","data":{"message":"failed to encode response"}})";

template <typename Data>
std::string ProtocolSession::respond(std::string_view type, std::optional<std::int64_t> reqId, Data data) {
    try {
        return encodeJson(ResponseEnvelope<Data>{std::string(type), reqId, std::move(data)});
    } catch (const JsonError&) {
        return std::string(failedToEncodeResponse);
    }
}

} // namespace tarnly
