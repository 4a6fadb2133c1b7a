#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Discovery/Visitors.hpp"
#include "TarnlyCore/Protocol/ProtocolSession.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/PeerNetwork.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// A client that has paired, as people want to know it. A plain value.
struct PairedClient {
    /// No other connection of this server has it, before or after.
    std::int64_t id = 0;
    /// Of IPv6 that of its network; "127.0.0.1" for this computer, by whichever address it comes.
    std::string address;
    /// When it paired, in UTC.
    std::chrono::sys_seconds since;
    std::size_t subscriptions = 0;
};

/// The companion's connection table: gives every connection a session, reads its text messages one at a time,
/// and writes the session's answers back.
///
/// The requests of one connection are answered in order, each when the last answer is on its way; different
/// connections go on side by side. A request that needs no waiting is answered on the spot. What goes wrong
/// with one connection ends that connection and nothing else, and one that has broken is gone at once,
/// whatever is under way for it; one that has vanished without a word is gone after a while. Belongs to the
/// network thread; held by its tasks weakly. While that runs, `cancelAll` and `join` come before its
/// destruction.
class ProtocolServer : public std::enable_shared_from_this<ProtocolServer> {
  public:
    using MakeSession = std::function<std::shared_ptr<ProtocolSession>(const PeerNetwork& peer)>;
    using BuildMessage = std::function<ProtocolSession::Push(const std::shared_ptr<ProtocolSession>&)>;

    /// A password needs no more, in bytes, and a stranger shall neither fill the memory nor keep a worker
    /// busy.
    static constexpr std::size_t unpairedMessageLimit = WorkerPool::longText;
    /// After so long without a byte a client is asked whether it is there, and after the second span it is
    /// not.
    static constexpr std::chrono::seconds silenceBeforePing{30};
    static constexpr std::chrono::seconds silenceAfterPing{60};

    /// `executor` runs the tasks of all connections. `clock` outlives them. `wallClock` tells the time in
    /// UTC.
    ProtocolServer(boost::asio::any_io_executor executor, Clock& clock, MakeSession makeSession,
                   Visitors::WallClock wallClock = FlightRecorder::systemTime);

    ~ProtocolServer();

    /// Takes a new connection into the table, and serves it until it ends.
    void accept(std::shared_ptr<WebSocketConnection> connection);

    /// Asks `build` for a message for every paired session and sends those that are present; a session whose
    /// build fails gets none.
    ///
    /// The messages are built side by side, many sessions' in several turns, and `broadcast` does not wait
    /// for them: a session whose values are late delays nobody. A session has one message under way at most:
    /// while it has, and while its peer is behind with reading, it is passed over; the next broadcast makes
    /// up for it.
    void broadcast(BuildMessage build);

    /// Tells all connections to end.
    void cancelAll();

    /// Waits until all connections and pushes have ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock::Duration limit);

    std::size_t connectionCount() const;

    /// How many of the connections have paired.
    std::size_t pairedCount() const;

    /// These, who has come first stands first.
    std::vector<PairedClient> pairedClients() const;

    /// Ends a connection as if the network had lost it: the client may come back at once, and goes on where
    /// it was. Says whether it was there.
    bool disconnect(std::int64_t id);

  private:
    class Client;
    using Table = std::map<const Client*, std::shared_ptr<Client>>;

    static Task<> pushToAll(std::weak_ptr<ProtocolServer> server, BuildMessage build);
    void pushTo(const std::shared_ptr<Client>& client, const BuildMessage& build);
    static Task<> pushLater(std::shared_ptr<Client> client, Task<std::optional<std::string>> building);
    void remove(const Client& client);
    static Task<> watchSilence(std::weak_ptr<ProtocolServer> server);
    std::vector<std::shared_ptr<Client>> snapshot() const;

    const boost::asio::any_io_executor executor_;
    Clock& clock_;
    const MakeSession makeSession_;
    const Visitors::WallClock wallClock_;
    OnOneThread thread_;
    std::int64_t lastId_ = 0;
    Table clients_;
    bool isSilenceWatched_ = false;
    Event changed_;
    TaskGroup tasks_;
    TaskGroup silenceWatch_;
};

} // namespace tarnly
