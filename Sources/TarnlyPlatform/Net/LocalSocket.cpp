#include "TarnlyPlatform/Net/LocalSocket.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <exception>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"
#include "TarnlyPlatform/Net/LocalSocketFile.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

using boost::asio::local::stream_protocol;

constexpr auto acceptPause = std::chrono::milliseconds(100);
/// For one who asks, until he has the answer.
constexpr auto servingPatience = std::chrono::seconds(5);
constexpr auto asTuple = boost::asio::as_tuple(boost::asio::use_awaitable);

/// An answer ends with its line feed, so that one that was cut short is known.
constexpr char endOfAnswer = '\n';

std::unique_ptr<LocalSocketFile> claim(const std::filesystem::path& file) {
    try {
        return std::make_unique<LocalSocketFile>(file);
    } catch (const std::system_error& error) {
        const bool isTaken = error.code() == std::errc::address_in_use;
        const auto reason = isTaken ? "another process answers here already" : error.code().message();
        throw NetworkError(NetworkError::Case::listenFailed, file.string() + ": " + reason);
    }
}

} // namespace

struct LocalListener::State {
    State(boost::asio::any_io_executor executor, Clock& givenClock, const std::filesystem::path& path,
          Answer givenAnswer)
        : clock(givenClock),
          answer(std::move(givenAnswer)),
          file(claim(path)),
          acceptor(executor, stream_protocol(), file->release()),
          tasks(std::move(executor)) {}

    OnOneThread thread;
    Clock& clock;
    const Answer answer;
    std::unique_ptr<LocalSocketFile> file;
    stream_protocol::acceptor acceptor;
    bool isCancelled = false;
    TaskGroup tasks;

    static Task<> acceptAll(std::shared_ptr<State> state);
    static Task<bool> acceptOne(std::shared_ptr<State> state);
    static Task<> serve(std::shared_ptr<State> state, stream_protocol::socket socket);
    static Task<> tell(std::shared_ptr<State> state, std::shared_ptr<stream_protocol::socket> socket);
};

Task<> LocalListener::State::acceptAll(std::shared_ptr<State> state) {
    while (!state->isCancelled) {
        bool isAccepted = false;
        try {
            isAccepted = co_await acceptOne(state);
        } catch (const std::exception&) {
        }
        if (isAccepted || state->isCancelled) continue;
        // Out of descriptors or memory, who waits would wake us again at once.
        co_await state->clock.sleepFor(acceptPause);
    }
}

Task<bool> LocalListener::State::acceptOne(std::shared_ptr<State> state) {
    state->thread.check();
    auto [error, socket] = co_await state->acceptor.async_accept(asTuple);
    if (error || state->isCancelled) co_return false;
    auto serving = serve(state, std::move(socket));
    state->tasks.spawn(std::move(serving), dropFailure); // it costs this one its answer
    co_return true;
}

Task<> LocalListener::State::serve(std::shared_ptr<State> state, stream_protocol::socket socket) {
    auto told = tell(state, std::make_shared<stream_protocol::socket>(std::move(socket)));
    co_await withinLimit(state->clock, servingPatience, std::move(told));
}

Task<> LocalListener::State::tell(std::shared_ptr<State> state,
                                  std::shared_ptr<stream_protocol::socket> socket) {
    auto answering = state->answer();
    auto text = co_await std::move(answering);
    text += endOfAnswer;
    const auto bytes = boost::asio::buffer(text);
    co_await boost::asio::async_write(*socket, bytes, asTuple);
}

LocalListener::LocalListener(boost::asio::any_io_executor executor, Clock& clock,
                             const std::filesystem::path& file, Answer answer)
    : state_(std::make_shared<State>(std::move(executor), clock, file, std::move(answer))) {
    state_->tasks.spawn(State::acceptAll(state_), dropFailure); // none leaves it
}

LocalListener::~LocalListener() {
    state_->isCancelled = true;
    boost::system::error_code ignored;
    state_->acceptor.close(ignored);
    state_->file.reset();
    state_->tasks.cancel();
}

std::string askLocally(const std::filesystem::path& file, std::chrono::milliseconds limit) {
    std::string answer;
    try {
        answer = readFromLocalSocket(file, limit);
    } catch (const std::system_error& error) {
        const bool isLate = error.code() == std::errc::timed_out;
        throw NetworkError(isLate ? NetworkError::Case::timedOut : NetworkError::Case::connectionFailed,
                           file.string() + ": " + error.code().message());
    }
    if (!answer.ends_with(endOfAnswer)) {
        throw NetworkError(NetworkError::Case::connectionClosed, file.string());
    }
    answer.pop_back();
    return answer;
}

} // namespace tarnly
