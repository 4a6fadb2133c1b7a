#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyCore/Protocol/ProtocolSession.hpp"
#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly {

/// The companion's connection table: gives every connection a session, reads its text messages one at a time,
/// and writes the session's answers back.
///
/// The requests of one connection are answered in order, the next one being read when the last answer has
/// left the queue; different connections go on side by side. Belongs to the network thread; held by its tasks
/// weakly.
class ProtocolServer : public std::enable_shared_from_this<ProtocolServer> {
  public:
    using MakeSession = std::function<std::shared_ptr<ProtocolSession>()>;
    using BuildMessage = std::function<Task<std::optional<std::string>>(std::shared_ptr<ProtocolSession>)>;

    /// `executor` runs the tasks of all connections.
    ProtocolServer(boost::asio::any_io_executor executor, MakeSession makeSession);

    /// Takes a new connection into the table, and serves it until it ends.
    void accept(std::shared_ptr<WebSocketConnection> connection);

    /// Asks `build` for a message for every paired session and sends those that are present; a session whose
    /// build fails gets none.
    ///
    /// The messages are built side by side and `broadcast` does not wait for them, so that a session whose
    /// values are late delays nobody. A session has one message under way at most: while it has, and while
    /// its peer is behind with reading, it is passed over; the next broadcast makes up for it.
    void broadcast(BuildMessage build);

    /// Ends all connections.
    void cancelAll();

    std::size_t connectionCount() const;

    /// How many of the connections have paired.
    std::size_t pairedCount() const;

  private:
    struct Connection {
        std::shared_ptr<WebSocketConnection> connection;
        std::shared_ptr<ProtocolSession> session;
        bool hasMessageUnderWay = false;
    };
    using Table = std::map<const WebSocketConnection*, std::shared_ptr<Connection>>;

    static Task<> receiveLoop(std::weak_ptr<ProtocolServer> server, std::shared_ptr<Connection> entry);
    static Task<bool> answerNext(std::shared_ptr<Connection> entry);
    static Task<bool> deliver(std::shared_ptr<WebSocketConnection> connection, std::string reply);
    static Task<> push(std::shared_ptr<Connection> entry, BuildMessage build);
    void remove(const Connection& entry);
    std::vector<std::shared_ptr<Connection>> snapshot() const;

    const boost::asio::any_io_executor executor_;
    const MakeSession makeSession_;
    Guarded<Table> connections_;
};

} // namespace tarnly
