#include "TarnlyCore/Protocol/ProtocolServer.hpp"

#include <algorithm>
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
    : makeSession_(std::move(makeSession)), tasks_(std::move(executor)) {}

void ProtocolServer::accept(std::shared_ptr<WebSocketConnection> connection) {
    thread_.check();
    connection->setMessageLimit(unpairedMessageLimit);
    const auto entry = std::make_shared<Connection>(Connection{std::move(connection), makeSession_()});
    connections_[entry->connection.get()] = entry;
    // Out of memory, say: that is the end of this connection, not of the companion.
    auto endConnection = [server = weak_from_this(), entry](const std::exception_ptr&) {
        finish(server, *entry);
    };
    tasks_.spawn(serve(weak_from_this(), entry), std::move(endConnection));
}

Task<> ProtocolServer::serve(std::weak_ptr<ProtocolServer> server, std::shared_ptr<Connection> entry) {
    bool goesOn = true;
    while (goesOn) {
        goesOn = co_await answerNext(entry);
    }
    finish(server, *entry);
}

void ProtocolServer::finish(const std::weak_ptr<ProtocolServer>& server, const Connection& entry) {
    entry.connection->cancel();
    if (const auto alive = server.lock()) alive->connections_.erase(entry.connection.get());
}

/// False when the connection has ended or is to be ended.
Task<bool> ProtocolServer::answerNext(std::shared_ptr<Connection> entry) {
    auto message = co_await entry->connection->receive();
    if (!message) co_return false;
    if (message->opcode != Opcode::text) co_return true; // dropped without an answer
    auto answering = entry->session->handleMessage(std::move(message->content));
    auto* answer = std::get_if<ProtocolSession::Answer>(&answering);
    ProtocolSession::Answer later;
    if (answer == nullptr) {
        later = co_await std::move(std::get<Task<ProtocolSession::Answer>>(answering));
        answer = &later;
    }
    if (!*answer) co_return false;
    auto reply = std::move(**answer);
    if (entry->session->isPaired()) entry->connection->setMessageLimit(pairedMessageLimit);
    auto text = co_await entry->session->wholeText(std::move(reply));
    const bool isDelivered = co_await deliver(entry->connection, std::move(text));
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
    thread_.check();
    for (const auto& entry : snapshot()) {
        if (entry->hasMessageUnderWay || !entry->session->isPaired()) continue;
        if (entry->connection->backlog() > backlogLimit) continue;
        entry->hasMessageUnderWay = true;
        // It costs this session its message of this round.
        auto skipRound = [entry](const std::exception_ptr&) { entry->hasMessageUnderWay = false; };
        tasks_.spawn(push(entry, build), std::move(skipRound));
    }
}

Task<> ProtocolServer::push(std::shared_ptr<Connection> entry, BuildMessage build) {
    auto building = build(entry->session);
    auto message = co_await std::move(building);
    if (message) entry->connection->send(std::move(*message), Kind::unsolicited);
    entry->hasMessageUnderWay = false;
}

void ProtocolServer::cancelAll() {
    thread_.check();
    for (const auto& entry : snapshot()) {
        entry->connection->cancel();
    }
}

std::size_t ProtocolServer::connectionCount() const {
    thread_.check();
    return connections_.size();
}

std::size_t ProtocolServer::pairedCount() const {
    thread_.check();
    const auto count = std::ranges::count_if(
        connections_, [](const auto& kept) { return kept.second->session->isPaired(); });
    return static_cast<std::size_t>(count);
}

/// A connection may come to its end, and so leave the table, while the table is gone through.
std::vector<std::shared_ptr<ProtocolServer::Connection>> ProtocolServer::snapshot() const {
    std::vector<std::shared_ptr<Connection>> entries;
    entries.reserve(connections_.size());
    for (const auto& [key, entry] : connections_) {
        entries.push_back(entry);
    }
    return entries;
}

} // namespace tarnly
