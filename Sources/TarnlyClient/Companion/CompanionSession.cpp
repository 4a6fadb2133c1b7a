#include "TarnlyClient/Companion/CompanionSession.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/this_coro.hpp>
#include <cstddef>
#include <exception>
#include <utility>

#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly::client {
namespace {

/// Answers may hold hours of recording.
constexpr std::size_t messageLimit = 256U << 20U;

Incoming parseIncoming(std::string text) {
    try {
        const auto json = parseJson(text);
        const auto head = decodeJson<TypeOnly>(json);
        const auto* data = jsonObject(json).if_contains("data");
        return {std::move(text), head.type, head.reqId, data == nullptr ? boost::json::value() : *data};
    } catch (const JsonError& error) {
        throw ClientError(std::string("the companion sent a message that is not understood: ") +
                          error.what() + "; " + otherVersionAdvice);
    }
}

std::string refusal(const PairResponse& response, bool hasPassword) {
    const auto reason = response.reason.value_or("no reason given");
    const auto text = "the companion refuses to pair: " + reason;
    if (!hasPassword && reason == "incorrect password")
        return "the companion wants a password; give it by --password-file FILE";
    return text + (hasPassword ? "; give the one that stands in the companion's settings"
                               : "; it may want a password: --password-file FILE");
}

/// With what to look at: an address that somebody has typed may be wrong, or an old one.
std::string noConnection(const NetworkError& failure) {
    auto text = std::string("no connection to the companion: ") + failure.what();
    if (failure.which() != NetworkError::Case::connectionFailed) return text;
    const bool isDeclined = failure.payload().find("declined") != std::string::npos;
    return text + (isDeclined ? "; another program may have that port: use the one that the companion shows"
                              : "; look whether it is running, and which port it shows");
}

} // namespace

/// Ends the connection unless it is destroyed in time.
class CompanionSession::Deadline {
  public:
    explicit Deadline(CompanionSession& session) : timer_(session.executor_) {
        // Without a deadline, for lack of memory, nobody shall wait for ever.
        auto closeNow = [&session](const std::exception_ptr&) { session.close(); };
        timer_.spawn(expire(session), std::move(closeNow));
    }

  private:
    static Task<> expire(CompanionSession& session) {
        co_await session.clock_.sleepFor(session.options_.timeout);
        // The time may be over while this is destroyed: the session may be gone as well, then.
        const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
        if (cancellation.cancelled() != boost::asio::cancellation_type::none) co_return;
        session.isTimedOut_ = true;
        session.connection_->cancel();
    }

    TaskGroup timer_;
};

CompanionSession::CompanionSession(boost::asio::any_io_executor executor, Clock& clock,
                                   std::shared_ptr<WebSocketConnection> connection, Options options)
    : executor_(std::move(executor)),
      clock_(clock),
      connection_(std::move(connection)),
      options_(std::move(options)) {
    connection_->setMessageLimit(messageLimit);
}

Task<> CompanionSession::pair() {
    PairRequest params{options_.password};
    auto data = co_await request(MessageType::pair, std::move(params));
    const auto response = decodeAnswer<PairResponse>(data);
    if (!response.accepted) throw ClientError(refusal(response, options_.password.has_value()));
}

Task<boost::json::value> CompanionSession::answer(std::string text, std::int64_t id) {
    auto reply = co_await exchange(std::move(text), id);
    if (reply.isError()) throw ClientError(errorMessage(reply));
    co_return std::move(reply.data);
}

Task<Incoming> CompanionSession::exchange(std::string text, std::optional<std::int64_t> reqId) {
    thread_.check();
    const Deadline deadline(*this);
    connection_->send(std::move(text), WebSocketConnection::Kind::awaited);
    for (;;) {
        auto incoming = co_await receive();
        // An error that carries no id answers a request that could not be read, or stands for an answer that
        // could not be written.
        if (incoming.reqId == reqId || (incoming.isError() && !incoming.reqId)) co_return incoming;
        if (incoming.isPush()) pushes_.push_back(decodeAnswer<Values>(incoming.data));
    }
}

Task<std::optional<Values>> CompanionSession::nextPush() {
    thread_.check();
    while (pushes_.empty()) {
        try {
            auto incoming = co_await receive();
            if (incoming.isPush()) pushes_.push_back(decodeAnswer<Values>(incoming.data));
        } catch (const SessionClosed&) {
            co_return std::nullopt;
        }
    }
    auto push = std::move(pushes_.front());
    pushes_.pop_front();
    co_return push;
}

void CompanionSession::close() {
    thread_.check();
    isClosed_ = true;
    connection_->cancel();
}

Task<Incoming> CompanionSession::receive() {
    for (;;) {
        auto message = co_await connection_->receive();
        if (!message) throwLost();
        if (message->opcode != WebSocketConnection::Opcode::text) continue;
        co_return parseIncoming(std::move(message->content));
    }
}

void CompanionSession::throwLost() const {
    if (isClosed_) throw SessionClosed();
    if (isTimedOut_) throw ConnectionLost("the companion did not answer in time");
    const auto failure = connection_->failure();
    throw ConnectionLost(failure ? noConnection(*failure) : "the companion has ended the connection");
}

void holdSession(const Endpoint& companion, CompanionSession::Options options, const SessionWork& work) {
    SystemClock clock;
    boost::asio::io_context io(1);
    CompanionSession session(io.get_executor(), clock,
                             openWebSocket(io.get_executor(), clock, companion, "/"), std::move(options));
    std::exception_ptr failure;
    boost::asio::co_spawn(io, work(session), [&](std::exception_ptr error) {
        failure = error;
        session.close();
    });
    io.run();
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const SessionClosed&) {
        // As the person wished.
    }
}

} // namespace tarnly::client
