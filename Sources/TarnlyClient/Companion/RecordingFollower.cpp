#include "TarnlyClient/Companion/RecordingFollower.hpp"

#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <utility>

#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly::client {

RecordingFollower::RecordingFollower(boost::asio::any_io_executor executor, Clock& clock, Endpoint companion,
                                     Options options, Listener listener)
    : executor_(std::move(executor)),
      clock_(clock),
      companion_(std::move(companion)),
      options_(std::move(options)),
      listener_(std::move(listener)),
      waiting_(executor_),
      timeLimit_(executor_) {}

Task<> RecordingFollower::run() {
    thread_.check();
    while (!isEnded_) {
        co_await followUntilLost();
        if (isEnded_) co_return;
        const auto pause = options_.pause.next();
        co_await wait(pause);
        if (isEnded_) co_return;
        co_await lookAgain();
    }
}

void RecordingFollower::end() {
    thread_.check();
    isEnded_ = true;
    if (session_) session_->close();
    waiting_.cancel();
    timeLimit_.cancel();
}

Task<> RecordingFollower::followUntilLost() {
    try {
        co_await follow();
    } catch (const SessionClosed&) {
        // As `end` wished.
    } catch (const ConnectionLost& error) {
        if (!hasBegun_) throw;
        lost(error.what());
    }
}

Task<> RecordingFollower::follow() {
    session_.emplace(executor_, openWebSocket(executor_, clock_, companion_, "/"), options_.session);
    co_await session_->pair();
    while (!isEnded_) {
        co_await ask();
        if (isEnded_) co_return;
        co_await wait(options_.interval);
    }
}

Task<> RecordingFollower::ask() {
    for (;;) {
        CatchUpRequest params{cursor_.since()};
        auto data = co_await session_->request(MessageType::catchUp, std::move(params));
        isAnswered();
        const auto news = cursor_.take(decodeAnswer<RecordedFlight>(data));
        if (news) {
            show(*news);
            co_return;
        }
        listener_.remark("the recording has begun anew");
    }
}

Task<> RecordingFollower::lookAgain() {
    if (!options_.locate) co_return;
    try {
        auto found = co_await workers_.run(options_.locate);
        companion_ = std::move(found);
    } catch (const ClientError&) {
        // It may be back where it was before it is found there.
    }
}

Task<> RecordingFollower::wait(std::chrono::milliseconds time) {
    waiting_.expires_after(time);
    boost::system::error_code cancelled;
    auto token = boost::asio::redirect_error(boost::asio::use_awaitable, cancelled);
    co_await waiting_.async_wait(token);
}

void RecordingFollower::show(const RecordedFlight& news) {
    for (const auto& line : linesInLogOrder(news)) {
        if (isEnded_) return;
        listener_.recorded(line);
        if (line.fired) ++shown_;
        if (options_.count == shown_) end();
    }
}

void RecordingFollower::isAnswered() {
    options_.pause.reset();
    if (std::exchange(isLost_, false)) listener_.remark("the companion is back");
    if (std::exchange(hasBegun_, true) || !options_.time) return;
    timeLimit_.expires_after(*options_.time);
    timeLimit_.async_wait([this](const boost::system::error_code& error) {
        if (!error) end();
    });
}

void RecordingFollower::lost(const std::string& reason) {
    session_->close();
    if (!std::exchange(isLost_, true)) listener_.remark(reason + "; trying again");
}

} // namespace tarnly::client
