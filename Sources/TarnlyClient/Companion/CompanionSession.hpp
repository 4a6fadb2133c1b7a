#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/json/value.hpp>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TarnlyClient/Companion/CompanionMessages.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"

namespace tarnly::client {

/// The companion is not there, is gone or does not answer: it may be there again later.
class ConnectionLost : public ClientError {
  public:
    using ClientError::ClientError;
};

/// This side closed the session while it waited for an answer, because the person wished it.
class SessionClosed : public std::runtime_error {
  public:
    SessionClosed() : std::runtime_error("the session was closed") {}
};

/// The talk with one companion: one request at a time, and the pushes that come between.
///
/// Every operation throws `ClientError` with a text for the person when the companion refuses, and
/// `ConnectionLost` when it does not answer in time or is gone. Belongs to the thread that runs the executor;
/// must outlive its operations.
class CompanionSession {
  public:
    struct Options {
        std::optional<std::string> password;
        std::chrono::milliseconds timeout;
    };

    /// `clock` must outlive all that runs on `executor`.
    CompanionSession(boost::asio::any_io_executor executor, Clock& clock,
                     std::shared_ptr<WebSocketConnection> connection, Options options);

    boost::asio::any_io_executor executor() const { return executor_; }
    Clock& clock() const { return clock_; }

    /// Comes before all else: the companion hangs up on strangers.
    Task<> pair();

    /// The reply's data.
    template <typename Params>
    Task<boost::json::value> request(std::string_view type, Params params) {
        const auto id = nextId();
        return answer(encodeJson(Request<Params>{std::string(type), id, std::move(params)}), id);
    }
    Task<boost::json::value> request(std::string_view type) {
        const auto id = nextId();
        return answer(encodeJson(Request<NoParams>{std::string(type), id, {}}), id);
    }

    /// Sends `text`, a request with that id, and returns the answer, be it an error.
    Task<Incoming> exchange(std::string text, std::optional<std::int64_t> reqId);

    /// The next push, however long it takes; absent once the session was closed here.
    Task<std::optional<Values>> nextPush();

    /// Ends the connection in order. What waits for a push gets none, what waits for an answer throws
    /// `SessionClosed`.
    void close();

  private:
    class Deadline;

    std::int64_t nextId() { return ++lastId_; }
    Task<boost::json::value> answer(std::string text, std::int64_t id);
    Task<Incoming> receive();
    [[noreturn]] void throwLost() const;

    OnOneThread thread_;
    const boost::asio::any_io_executor executor_;
    Clock& clock_;
    const std::shared_ptr<WebSocketConnection> connection_;
    const Options options_;
    std::int64_t lastId_ = 0;
    /// Those that came while an answer was waited for.
    std::deque<Values> pushes_;
    bool isClosed_ = false;
    bool isTimedOut_ = false;
};

/// What a session is for. Not itself a coroutine with captures: it calls one and hands it what it needs.
using SessionWork = std::function<Task<>(CompanionSession& session)>;

/// Opens a session with the companion, does `work` in it and says good-bye. Blocks until that is done; throws
/// what `work` threw.
void holdSession(const Endpoint& companion, CompanionSession::Options options, const SessionWork& work);

} // namespace tarnly::client
