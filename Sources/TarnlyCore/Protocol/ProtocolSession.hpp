#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "TarnlyCore/Discovery/PairingGuard.hpp"
#include "TarnlyCore/Discovery/PairingManager.hpp"
#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Protocol/Request.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/Script/LoadedScript.hpp"
#include "TarnlyPlatform/Base/Allowance.hpp"
#include "TarnlyPlatform/Base/Error.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/PeerNetwork.hpp"

namespace tarnly {

/// A session's own failure. Clients receive exactly `what()`: `missingParams("load_flight requires a
/// path")`.
struct ProtocolSessionErrorCases {
    enum class Case { missingParams };
    static constexpr std::array<std::string_view, 1> names{"missingParams"};
};
using ProtocolSessionError = Error<ProtocolSessionErrorCases>;

/// The answer to one request, whole or in pieces: of a long one each piece is made when the one before has
/// gone.
struct Reply {
    /// All of it, or the first piece.
    std::string text;
    /// The next piece; empty behind the last one. For a worker to call, one call at a time. Null: `text` is
    /// all.
    std::function<std::string()> nextPiece;
};

/// One connection's side of the protocol: text in, text out. Knows no sockets and no clock.
///
/// Lets nothing but "pair" through until the connection has paired, hands requests to the simulator, the
/// recording and the script, and keeps the connection's dataref subscriptions. Owned by the server's
/// table; lives as long as the connection or a task for it.
class ProtocolSession {
  public:
    /// What all sessions share. The pools outlive them; nothing else is null but what says so.
    struct Services {
        std::shared_ptr<PairingManager> pairing;
        std::shared_ptr<PairingGuard> guard;
        std::shared_ptr<SimBackend> backend;
        std::shared_ptr<FlightRecorder> recording;
        std::shared_ptr<LoadedScript> loadedScript;
        MakeFixResolver makeFixResolver;
        /// How many names the sessions may subscribe to, together.
        std::shared_ptr<Allowance> names;
        WorkerPool& workers;
        /// Scripts have a pool of their own, because looking up their fixes may take seconds.
        WorkerPool& scriptWorkers;
        /// Called when the memory of a long request is let go; may be null.
        std::function<void()> onMuchFreed{};
    };

    /// `network` is where the client comes from.
    explicit ProtocolSession(Services services, const PeerNetwork& network = {});

    ProtocolSession(const ProtocolSession&) = delete;
    ProtocolSession& operator=(const ProtocolSession&) = delete;
    ~ProtocolSession();

    /// Once true it stays true: neither a new password nor a later refused attempt unpairs.
    bool isPaired() const { return isPaired_; }

    /// Absent when the connection is to be closed without a word: an unpaired client learns nothing but the
    /// answer to "pair".
    using Answer = std::optional<Reply>;

    /// The answer to one text frame, in which bytes that are not UTF-8 count as U+FFFD; the work that leads
    /// to it where something has to be waited for. Neither fails; to be called for one frame at a time.
    std::variant<Answer, Task<Answer>> handleMessage(std::string text);

    /// The connection has gone: a script that is still being loaded does not come into force any more, the
    /// search for its fixes ends, and an attempt to pair waits no longer.
    void end();

    /// The peer has hung up, and reads its answers at most: a search for fixes that lasts is given up, and
    /// its script with it, and so is an attempt to pair that waits.
    void hangUp();

    /// The next piece of a reply, made where it disturbs nobody.
    Task<std::string> makePiece(std::function<std::string()> nextPiece);

    /// A push that is there, or the work that leads to it.
    using Push = std::variant<std::optional<std::string>, Task<std::optional<std::string>>>;

    /// The present values of all subscribed datarefs, or absent when there are none. The work throws what the
    /// first read that fails throws. May run beside `handleMessage`.
    Push buildSubscriptionPush();

    /// How many datarefs it is subscribed to. From any thread.
    std::size_t subscriptionCount() const;

    /// From any thread; of very many names, best on a worker's. Throws `ProtocolLimitError`.
    void addSubscriptions(std::vector<std::string> names);

    /// The text of a response; the fixed "failed to encode response" error where `data` cannot be
    /// encoded.
    template <typename Data>
    static std::string respond(std::string_view type, std::optional<std::int64_t> reqId, Data data);

  private:
    struct Decoded;
    using Names = std::vector<std::string>;
    using SharedNames = std::shared_ptr<const Names>;
    using SharedRequest = std::shared_ptr<Decoded>;
    /// A reply that is there, or the work that leads to it.
    using Handling = std::variant<Reply, Task<Reply>>;
    using Handler = Handling (ProtocolSession::*)(const SharedRequest&);
    struct Entry {
        std::string_view type;
        /// Null where the kind has no parameters.
        Request::Params (*read)(std::string_view text);
        Handler handle;
    };
    static const std::vector<Entry>& handlers();

    struct Decoded : Request {
        /// Null: `refusal` is the answer.
        Handler handle = nullptr;
        std::string refusal;
    };

    /// Null for what is no request.
    static SharedRequest decode(std::string text, bool isPaired);
    Task<Answer> handleLong(std::string text);
    /// Whether the session talks with the peer about it at all.
    bool admits(const SharedRequest& request) const;
    Handling handle(const SharedRequest& request);
    static Task<Answer> finish(SharedRequest request, Task<Reply> work);
    template <typename Data>
    static Reply replyTo(const Request& request, Data data) {
        return {respond(request.head.type, request.head.reqId, std::move(data)), {}};
    }

    Handling pair(const SharedRequest& request);
    Task<Reply> pairInTurn(SharedRequest request, std::optional<std::string> password);
    Reply finishPairing(const Request& request, const std::optional<std::string>& password);
    Handling simInfo(const SharedRequest& request);

    template <Task<Reply> (ProtocolSession::*work)(SharedRequest)>
    Handling later(const SharedRequest& request) {
        return (this->*work)(request);
    }
    Task<Reply> listFlights(SharedRequest request);
    Task<Reply> loadFlight(SharedRequest request);
    Task<Reply> loadScript(SharedRequest request);
    Task<Reply> startRecording(SharedRequest request);
    Task<Reply> stopRecording(SharedRequest request);
    Task<> waitUntilWritten(Clock::Duration limit);
    Task<Reply> catchUp(SharedRequest request);
    Task<Reply> subscribeValues(SharedRequest request);
    Task<Reply> setValues(SharedRequest request);
    Task<Reply> runCommand(SharedRequest request);
    Task<Reply> moveToPreservingAgl(SharedRequest request);
    Task<Reply> applyAttitude(SharedRequest request);
    void takeNames(std::size_t ofSession, std::size_t added);
    Task<std::optional<std::string>> buildPushLater(SharedNames names);
    /// Throws what the first read that fails throws.
    Task<std::string> respondWithValues(std::optional<std::int64_t> reqId, SharedNames names);

    const Services services_;
    const PeerNetwork network_;
    /// Of the last accepted attempt to pair; empty before.
    std::string token_;
    bool hadLongRequest_ = false;
    struct Peer {
        std::atomic<bool> hasEnded = false;
        std::atomic<bool> hasHungUp = false;
    };
    /// Shared with the scripts that are being loaded.
    const std::shared_ptr<Peer> peer_ = std::make_shared<Peer>();
    std::atomic<bool> isPaired_ = false;
    /// In order, each once; shared with the pushes under way. Null while there are none.
    Guarded<SharedNames> namesToPush_;
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
