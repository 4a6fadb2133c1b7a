#include "TarnlyCore/Protocol/ProtocolServer.hpp"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <exception>
#include <utility>
#include <variant>

#include "TarnlyPlatform/Base/Event.hpp"

namespace tarnly {
namespace {

using Kind = WebSocketConnection::Kind;
using Message = WebSocketConnection::Message;

constexpr std::size_t pairedMessageLimit = 64 * 1024 * 1024;

/// So many that others wait for a fraction of a millisecond.
constexpr std::size_t pushesATurn = 32;

/// A peer that owes more than this is passed over by broadcasts.
constexpr std::size_t backlogLimit = 256 * 1024;

} // namespace

/// One connection and its session.
///
/// What can be answered at once is, where the message was read. For the rest there is one coroutine a
/// connection, from its first such request on.
class ProtocolServer::Client final : public WebSocketConnection::Receiver,
                                     public std::enable_shared_from_this<Client> {
  public:
    Client(std::shared_ptr<WebSocketConnection> connection, std::shared_ptr<ProtocolSession> session,
           std::weak_ptr<ProtocolServer> server, const boost::asio::any_io_executor& executor,
           Clock::TimePoint now, std::int64_t id)
        : id_(id),
          connection_(std::move(connection)),
          session_(std::move(session)),
          server_(std::move(server)),
          heardAt_(now),
          changed_(executor) {}

    WebSocketConnection& connection() { return *connection_; }
    const std::shared_ptr<ProtocolSession>& session() const { return session_; }
    std::int64_t id() const { return id_; }

    PairedClient description() const {
        const auto visit = connection_->visit();
        return {id_, (visit ? visit->from() : PeerNetwork()).text(), pairedAt_,
                session_->subscriptionCount()};
    }
    bool hasMessageUnderWay = false;

    /// Asks a client that says nothing whether it is there, and cuts one that does not answer. Says when to
    /// look again.
    Clock::TimePoint watchSilence(Clock::TimePoint now) {
        const auto signs = connection_->signsOfLife();
        const auto heardAt =
            std::max({heardAt_, signs.lastByteAt.value_or(heardAt_), signs.lastTakenAt.value_or(heardAt_)});
        if (std::exchange(heardAt_, heardAt) != heardAt) isAsked_ = false;
        const auto askAt = heardAt + silenceBeforePing;
        if (now < askAt) return askAt;
        const auto goneAt = askAt + silenceAfterPing;
        if (now >= goneAt) {
            connection_->abort();
        } else if (!std::exchange(isAsked_, true)) {
            connection_->ping();
        }
        return goneAt;
    }

    bool onMessage(Message message) override {
        if (message.opcode != WebSocketConnection::Opcode::text) return true; // dropped without an answer
        auto answering = session_->handleMessage(std::move(message.content));
        auto* answer = std::get_if<ProtocolSession::Answer>(&answering);
        if (answer != nullptr && isWhole(*answer)) return give(std::move(*answer));
        pauseProbation(true); // it waits for us
        underWay_.emplace(UnderWay{std::move(answering), std::move(message.room)});
        startWorking();
        return false;
    }

    void onHangUp() override { session_->hangUp(); }

    void onEnd() override {
        hasEnded_ = true;
        session_->end();
        changed_.notifyAll();
        if (const auto server = server_.lock()) server->remove(*this);
    }

  private:
    struct UnderWay {
        std::variant<ProtocolSession::Answer, Task<ProtocolSession::Answer>> answering;
        std::vector<ByteBudget::Lease> room;
    };

    static bool isWhole(const ProtocolSession::Answer& answer) { return !answer || !answer->nextPiece; }

    /// Says whether the next request may come.
    bool give(ProtocolSession::Answer answer) {
        if (!answer) {
            connection_->cancel();
            return false;
        }
        noteIfPaired();
        connection_->send(std::move(answer->text), Kind::awaited);
        return true;
    }

    void noteIfPaired() {
        if (std::exchange(isPaired_, session_->isPaired()) || !isPaired_) return;
        connection_->setMessageLimit(pairedMessageLimit);
        if (const auto server = server_.lock()) pairedAt_ = server->wallClock_();
        if (const auto visit = connection_->visit()) visit->trust();
    }

    void pauseProbation(bool isPaused) {
        const auto visit = isPaired_ ? nullptr : connection_->visit();
        if (visit) isPaused ? visit->pauseProbation() : visit->resumeProbation();
    }

    void startWorking() {
        changed_.notifyAll();
        const auto server = server_.lock();
        if (!server || std::exchange(isWorking_, true)) return;
        // Out of memory, say: that is the end of this connection, not of the companion.
        auto endConnection = [self = shared_from_this()](const std::exception_ptr&) {
            self->connection_->cancel();
        };
        server->tasks_.spawn(work(shared_from_this()), std::move(endConnection));
    }

    static Task<> work(std::shared_ptr<Client> self) {
        while (!self->hasEnded_) {
            if (self->underWay_) {
                co_await self->finishRequest();
            } else {
                co_await self->changed_.wait();
            }
        }
    }

    Task<> finishRequest() {
        auto answering = std::move(underWay_->answering);
        ProtocolSession::Answer answer;
        if (auto* task = std::get_if<Task<ProtocolSession::Answer>>(&answering)) {
            answer = co_await std::move(*task);
        } else {
            answer = std::move(std::get<ProtocolSession::Answer>(answering));
        }
        if (answer && answer->nextPiece) {
            noteIfPaired();
            co_await giveInPieces(std::move(*answer));
        } else if (!give(std::move(answer))) {
            hasEnded_ = true;
        }
        underWay_.reset();
        pauseProbation(false);
        connection_->resume();
    }

    /// Each piece is made when the peer has taken the one before.
    Task<> giveInPieces(Reply reply) {
        while (!reply.text.empty() && !hasEnded_) {
            auto next = co_await session_->makePiece(reply.nextPiece);
            auto part = std::exchange(reply.text, std::move(next));
            connection_->sendPart(std::move(part), reply.text.empty());
            co_await connection_->drained();
        }
    }

    const std::int64_t id_;
    const std::shared_ptr<WebSocketConnection> connection_;
    const std::shared_ptr<ProtocolSession> session_;
    const std::weak_ptr<ProtocolServer> server_;
    bool isPaired_ = false;
    std::chrono::sys_seconds pairedAt_{};
    Clock::TimePoint heardAt_;
    bool isAsked_ = false; // since it was heard last
    std::optional<UnderWay> underWay_;
    bool isWorking_ = false;
    bool hasEnded_ = false;
    Event changed_;
};

ProtocolServer::ProtocolServer(boost::asio::any_io_executor executor, Clock& clock, MakeSession makeSession,
                               Visitors::WallClock wallClock)
    : executor_(std::move(executor)),
      clock_(clock),
      makeSession_(std::move(makeSession)),
      wallClock_(std::move(wallClock)),
      changed_(executor_),
      tasks_(executor_),
      silenceWatch_(executor_) {}

ProtocolServer::~ProtocolServer() = default;

void ProtocolServer::accept(std::shared_ptr<WebSocketConnection> connection) {
    thread_.check();
    connection->setMessageLimit(unpairedMessageLimit);
    const auto visit = connection->visit();
    auto session = makeSession_(visit ? visit->from() : PeerNetwork());
    const auto client = std::make_shared<Client>(connection, std::move(session), weak_from_this(), executor_,
                                                 clock_.now(), ++lastId_);
    clients_.emplace(client.get(), client);
    connection->setReceiver(client);
    if (std::exchange(isSilenceWatched_, true)) return;
    // Without a timer, for lack of memory, the next client brings another one.
    auto watchAgain = [weak = weak_from_this()](const std::exception_ptr&) {
        if (const auto server = weak.lock()) server->isSilenceWatched_ = false;
    };
    try {
        silenceWatch_.spawn(watchSilence(weak_from_this()), std::move(watchAgain));
    } catch (const std::exception&) {
        isSilenceWatched_ = false;
        throw;
    }
}

/// One timer for all clients, while there are some.
Task<> ProtocolServer::watchSilence(std::weak_ptr<ProtocolServer> weak) {
    auto server = weak.lock();
    while (server) {
        auto& clock = server->clock_;
        const auto now = clock.now();
        auto next = now + silenceBeforePing; // for who comes meanwhile
        for (const auto& client : server->snapshot())
            next = std::min<Clock::TimePoint>(next, client->watchSilence(now));
        server.reset();
        const auto pause = std::max<Clock::Duration>(next - now, std::chrono::seconds(1));
        co_await clock.sleepFor(pause);
        server = weak.lock();
    }
}

void ProtocolServer::remove(const Client& client) {
    clients_.erase(&client);
    changed_.notifyAll();
    if (!clients_.empty()) return;
    silenceWatch_.cancel();
    isSilenceWatched_ = false;
}

Task<bool> ProtocolServer::join(Clock::Duration limit) {
    const auto self = shared_from_this();
    const auto deadline = clock_.now() + limit;
    while (!clients_.empty() && clock_.now() < deadline) {
        const auto left = deadline - clock_.now();
        co_await waitFor(changed_, clock_, left);
    }
    const auto left = deadline - clock_.now();
    const bool haveEnded = co_await tasks_.join(clock_, left);
    co_return haveEnded&& clients_.empty();
}

void ProtocolServer::broadcast(BuildMessage build) {
    thread_.check();
    // For lack of memory, say, this round is over.
    tasks_.spawn(pushToAll(weak_from_this(), std::move(build)), dropFailure);
}

Task<> ProtocolServer::pushToAll(std::weak_ptr<ProtocolServer> server, BuildMessage build) {
    std::vector<std::shared_ptr<Client>> clients;
    if (const auto alive = server.lock()) clients = alive->snapshot();
    std::size_t pushes = 0;
    for (const auto& client : clients) {
        if (const auto alive = server.lock()) alive->pushTo(client, build);
        if (++pushes % pushesATurn != 0) continue;
        auto executor = co_await boost::asio::this_coro::executor;
        co_await boost::asio::post(executor, boost::asio::use_awaitable);
    }
}

void ProtocolServer::pushTo(const std::shared_ptr<Client>& client, const BuildMessage& build) {
    if (client->hasMessageUnderWay || !client->session()->isPaired()) return;
    if (client->connection().backlog() > backlogLimit) return;
    auto push = build(client->session());
    if (auto* text = std::get_if<std::optional<std::string>>(&push)) {
        if (*text) client->connection().send(std::move(**text), Kind::unsolicited);
        return;
    }
    client->hasMessageUnderWay = true;
    // It costs this session its message of this round.
    auto skipRound = [client](const std::exception_ptr&) { client->hasMessageUnderWay = false; };
    auto building = std::move(std::get<Task<std::optional<std::string>>>(push));
    tasks_.spawn(pushLater(client, std::move(building)), std::move(skipRound));
}

Task<> ProtocolServer::pushLater(std::shared_ptr<Client> client, Task<std::optional<std::string>> building) {
    auto message = co_await std::move(building);
    if (message) client->connection().send(std::move(*message), Kind::unsolicited);
    client->hasMessageUnderWay = false;
}

void ProtocolServer::cancelAll() {
    thread_.check();
    for (const auto& client : snapshot()) {
        client->connection().cancel();
    }
}

std::size_t ProtocolServer::connectionCount() const {
    thread_.check();
    return clients_.size();
}

std::size_t ProtocolServer::pairedCount() const {
    thread_.check();
    const auto count =
        std::ranges::count_if(clients_, [](const auto& kept) { return kept.second->session()->isPaired(); });
    return static_cast<std::size_t>(count);
}

std::vector<PairedClient> ProtocolServer::pairedClients() const {
    thread_.check();
    std::vector<PairedClient> paired;
    for (const auto& [key, client] : clients_) {
        if (client->session()->isPaired()) paired.push_back(client->description());
    }
    std::ranges::sort(paired, {}, &PairedClient::id);
    return paired;
}

bool ProtocolServer::disconnect(std::int64_t id) {
    thread_.check();
    const auto found =
        std::ranges::find_if(clients_, [id](const auto& kept) { return kept.second->id() == id; });
    if (found == clients_.end()) return false;
    const auto client = found->second; // leaves the table by it
    client->connection().abort();
    return true;
}

/// A connection may come to its end, and so leave the table, while the table is gone through.
std::vector<std::shared_ptr<ProtocolServer::Client>> ProtocolServer::snapshot() const {
    std::vector<std::shared_ptr<Client>> clients;
    clients.reserve(clients_.size());
    for (const auto& [key, client] : clients_) {
        clients.push_back(client);
    }
    return clients;
}

} // namespace tarnly
