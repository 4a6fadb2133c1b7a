#include "TarnlyCore/Protocol/ProtocolServer.hpp"

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <exception>
#include <utility>

namespace tarnly {
namespace {

using Kind = WebSocketConnection::Kind;
using Opcode = WebSocketConnection::Opcode;

/// A password needs no more, and a stranger shall not fill the memory.
constexpr std::size_t unpairedMessageLimit = 1024 * 1024;
constexpr std::size_t pairedMessageLimit = 64 * 1024 * 1024;

/// A peer that owes more than this is passed over by broadcasts.
constexpr std::size_t backlogLimit = 256 * 1024;

} // namespace

ProtocolServer::ProtocolServer(boost::asio::any_io_executor executor, MakeSession makeSession)
    : executor_(std::move(executor)), makeSession_(std::move(makeSession)) {}

void ProtocolServer::accept(std::shared_ptr<WebSocketConnection> connection) {
    connection->setMessageLimit(unpairedMessageLimit);
    const auto entry = std::make_shared<Connection>(Connection{std::move(connection), makeSession_()});
    connections_.with([&](Table& table) { table[entry->connection.get()] = entry; });
    boost::asio::co_spawn(executor_, receiveLoop(weak_from_this(), entry), boost::asio::detached);
}

Task<> ProtocolServer::receiveLoop(std::weak_ptr<ProtocolServer> server, std::shared_ptr<Connection> entry) {
    try {
        bool goesOn = true;
        while (goesOn) {
            goesOn = co_await answerNext(entry);
        }
    } catch (const std::exception&) {
        // Out of memory, say: that is the end of this connection, not of the companion.
    }
    entry->connection->cancel();
    if (const auto alive = server.lock()) alive->remove(*entry);
}

/// False when the connection has ended or is to be ended.
Task<bool> ProtocolServer::answerNext(std::shared_ptr<Connection> entry) {
    auto message = co_await entry->connection->receive();
    if (!message) co_return false;
    if (message->opcode != Opcode::text) co_return true; // dropped without an answer
    auto reply = co_await entry->session->handleMessage(std::move(message->content));
    if (!reply) co_return false;
    if (entry->session->isPaired()) entry->connection->setMessageLimit(pairedMessageLimit);
    const bool isDelivered = co_await deliver(entry->connection, std::move(*reply));
    co_return isDelivered;
}

Task<bool> ProtocolServer::deliver(std::shared_ptr<WebSocketConnection> connection, std::string reply) {
    connection->send(std::move(reply), Kind::awaited);
    try {
        co_await connection->drained();
        co_return true;
    } catch (const NetworkError&) {
        co_return false;
    }
}

void ProtocolServer::broadcast(BuildMessage build) {
    for (const auto& entry : snapshot()) {
        if (entry->hasMessageUnderWay || !entry->session->isPaired()) continue;
        if (entry->connection->backlog() > backlogLimit) continue;
        entry->hasMessageUnderWay = true;
        boost::asio::co_spawn(executor_, push(entry, build), boost::asio::detached);
    }
}

Task<> ProtocolServer::push(std::shared_ptr<Connection> entry, BuildMessage build) {
    try {
        auto building = build(entry->session);
        auto message = co_await std::move(building);
        if (message) entry->connection->send(std::move(*message), Kind::unsolicited);
    } catch (const std::exception&) {
        // It costs this session its message of this round.
    }
    entry->hasMessageUnderWay = false;
}

void ProtocolServer::cancelAll() {
    for (const auto& entry : snapshot()) {
        entry->connection->cancel();
    }
}

std::size_t ProtocolServer::connectionCount() const {
    return connections_.with([](const Table& table) { return table.size(); });
}

std::size_t ProtocolServer::pairedCount() const {
    const auto entries = snapshot();
    const auto count =
        std::ranges::count_if(entries, [](const auto& entry) { return entry->session->isPaired(); });
    return static_cast<std::size_t>(count);
}

void ProtocolServer::remove(const Connection& entry) {
    connections_.with([&](Table& table) { table.erase(entry.connection.get()); });
}

std::vector<std::shared_ptr<ProtocolServer::Connection>> ProtocolServer::snapshot() const {
    return connections_.with([](const Table& table) {
        std::vector<std::shared_ptr<Connection>> entries;
        entries.reserve(table.size());
        for (const auto& [key, entry] : table) {
            entries.push_back(entry);
        }
        return entries;
    });
}

} // namespace tarnly
