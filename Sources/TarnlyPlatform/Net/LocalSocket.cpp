#include "TarnlyPlatform/Net/LocalSocket.hpp"

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Base/Aside.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WithinLimit.hpp"
#include "TarnlyPlatform/Net/AcceptLoop.hpp"
#include "TarnlyPlatform/Net/LocalSocketFile.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

using boost::asio::local::stream_protocol;

/// For one who asks, until he has the answer.
constexpr auto servingPatience = std::chrono::seconds(5);

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

    static Task<> serveOne(std::shared_ptr<State> state, stream_protocol::socket socket);
    static Task<> tell(std::shared_ptr<State> state, std::shared_ptr<stream_protocol::socket> socket);
};

Task<> LocalListener::State::serveOne(std::shared_ptr<State> state, stream_protocol::socket socket) {
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
    state_->tasks.keepUp([state = std::weak_ptr(state_)] { return acceptAll(state.lock()); });
}

void LocalListener::close() {
    state_->isCancelled = true;
    boost::system::error_code ignored;
    state_->acceptor.close(ignored);
    state_->tasks.cancel();
}

LocalListener::~LocalListener() {
    close();
    state_->file.reset();
}

std::string askLocally(const std::filesystem::path& file, std::chrono::milliseconds limit) {
    std::optional<std::string> read;
    try {
        // Where the folder's mount hangs, so does connecting.
        read = aside(limit, [file, limit] { return readFromLocalSocket(file, limit); });
    } catch (const std::system_error& error) {
        const bool isLate = error.code() == std::errc::timed_out;
        throw NetworkError(isLate ? NetworkError::Case::timedOut : NetworkError::Case::connectionFailed,
                           file.string() + ": " + error.code().message());
    }
    if (!read) throw NetworkError(NetworkError::Case::timedOut, file.string());
    if (!read->ends_with(endOfAnswer)) {
        throw NetworkError(NetworkError::Case::connectionClosed, file.string());
    }
    read->pop_back();
    return *std::move(read);
}

} // namespace tarnly
