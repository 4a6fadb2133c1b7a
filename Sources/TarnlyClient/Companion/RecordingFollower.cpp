#include "TarnlyClient/Companion/RecordingFollower.hpp"

#include <boost/asio/cancellation_type.hpp>
#include <boost/asio/this_coro.hpp>
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
      ended_(executor_),
      timeLimit_(executor_) {}

Task<> RecordingFollower::run() {
    thread_.check();
    while (!isEnded_) {
        co_await followUntilLost();
        if (isEnded_) co_return;
        const auto pause = options_.pause.next();
        co_await waitFor(ended_, clock_, pause);
        if (isEnded_) co_return;
        co_await lookAgain();
    }
}

void RecordingFollower::end() {
    thread_.check();
    isEnded_ = true;
    if (session_) session_->close();
    ended_.notifyAll();
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
    session_.emplace(executor_, clock_, openWebSocket(executor_, clock_, companion_, "/"), options_.session);
    co_await session_->pair();
    while (!isEnded_) {
        co_await ask();
        if (isEnded_) co_return;
        co_await waitFor(ended_, clock_, options_.interval);
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
        tellBegunAnew();
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

Task<> RecordingFollower::endAfter(Clock::Duration time) {
    co_await clock_.sleepFor(time);
    const auto cancellation = co_await boost::asio::this_coro::cancellation_state;
    if (cancellation.cancelled() == boost::asio::cancellation_type::none) end();
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
    if (std::exchange(isLost_, false)) {
        tellConnected(true);
        listener_.remark("the companion is back");
    }
    if (std::exchange(hasBegun_, true) || !options_.time) return;
    timeLimit_.spawn(endAfter(*options_.time), [this](const std::exception_ptr&) { end(); });
}

void RecordingFollower::lost(const std::string& reason) {
    session_->close();
    if (std::exchange(isLost_, true)) return;
    tellConnected(false);
    listener_.remark(reason + "; trying again");
}

void RecordingFollower::tellBegunAnew() {
    if (listener_.begunAnew) return listener_.begunAnew();
    listener_.remark("the recording has begun anew");
}

void RecordingFollower::tellConnected(bool isConnected) {
    if (listener_.connected) listener_.connected(isConnected);
}

} // namespace tarnly::client
