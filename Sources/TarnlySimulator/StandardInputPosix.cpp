#include <unistd.h>

#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Base/AsTuple.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlySimulator/StandardInput.hpp"

namespace tarnly::simulator {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

constexpr std::size_t longestLine = 64 * 1024;

} // namespace

struct StandardInput::State {
    State(const asio::any_io_executor& executor, std::function<void(const std::string&)> handler)
        : onLine(std::move(handler)), input(executor), tasks(executor) {}

    const std::function<void(const std::string&)> onLine;
    asio::posix::stream_descriptor input;
    std::string line;
    std::array<char, 4096> buffer{};
    TaskGroup tasks;

    void take(std::string_view bytes) {
        for (const char byte : bytes) {
            if (byte == '\n') {
                onLine(std::exchange(line, {}));
            } else if (line.size() < longestLine) {
                line += byte;
            }
        }
    }

    void end() {
        if (!line.empty()) onLine(std::exchange(line, {}));
    }

    /// What the system has no news of, a file or the null device, never keeps its reader waiting.
    void readAtOnce() {
        ssize_t size = 0;
        while ((size = ::read(STDIN_FILENO, buffer.data(), buffer.size())) > 0)
            take({buffer.data(), static_cast<std::size_t>(size)});
        end();
    }

    static Task<> readAll(std::shared_ptr<State> state);
};

Task<> StandardInput::State::readAll(std::shared_ptr<State> state) {
    while (true) {
        const auto space = asio::buffer(state->buffer);
        auto [error, size] = co_await state->input.async_read_some(space, asTuple);
        if (error == asio::error::operation_aborted) co_return;
        if (error) break;
        state->take({state->buffer.data(), size});
    }
    state->end();
}

StandardInput::StandardInput(asio::any_io_executor executor, std::function<void(const std::string&)> onLine)
    : state_(std::make_shared<State>(executor, std::move(onLine))) {
    error_code isNoStream;
    const int descriptor = ::dup(STDIN_FILENO);
    state_->input.assign(descriptor, isNoStream);
    if (isNoStream) {
        ::close(descriptor);
        state_->readAtOnce();
    } else {
        state_->tasks.spawn(State::readAll(state_), dropFailure); // none leaves it
    }
}

StandardInput::~StandardInput() {
    error_code ignored;
    state_->input.close(ignored);
    state_->tasks.cancel();
}

} // namespace tarnly::simulator
