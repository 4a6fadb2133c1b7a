#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/system/error_code.hpp>
#include <utility>

#include "TarnlyClient/Lesson/LessonTerminal.hpp"

namespace tarnly::client {
namespace {

using boost::system::error_code;

/// Keys come at once and unseen. Ctrl-C stays a signal, which is taken; Ctrl-Z would leave the shell with
/// this terminal, so it is none.
void makeImmediate(termios& mode) {
    mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    mode.c_cc[VMIN] = 1;
    mode.c_cc[VTIME] = 0;
    mode.c_cc[VSUSP] = _POSIX_VDISABLE;
}

bool isOurs(int terminal) { return ::isatty(terminal) == 1 && ::tcgetpgrp(terminal) == ::getpgrp(); }

} // namespace

bool isOutputATerminal() { return ::isatty(STDOUT_FILENO) == 1; }

TerminalSize outputSize() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {};
    return {size.ws_col, size.ws_row};
}

struct Keyboard::State : std::enable_shared_from_this<Keyboard::State> {
    State(const boost::asio::any_io_executor& executor, std::function<void(char key)> handler)
        : input(executor), onKey(std::move(handler)) {}

    bool open() {
        if (!isOurs(STDIN_FILENO) || ::tcgetattr(STDIN_FILENO, &before) != 0) return false;
        const int copy = ::dup(STDIN_FILENO);
        if (copy < 0) return false;
        error_code error;
        input.assign(copy, error);
        if (error) {
            ::close(copy);
            return false;
        }
        auto mode = before;
        makeImmediate(mode);
        if (::tcsetattr(STDIN_FILENO, TCSANOW, &mode) == 0) return true;
        close();
        return false;
    }

    /// Waits and reads by itself: Asio's own reading would make the terminal non-blocking for all who have
    /// it.
    void listen() {
        input.async_wait(input.wait_read, [self = shared_from_this()](const error_code& error) {
            if (!error && self->isOpen()) self->take();
        });
    }

    void take() {
        std::array<char, 64> keys{};
        const auto size = ::read(input.native_handle(), keys.data(), keys.size());
        if (size <= 0) return; // the terminal is gone: the lesson goes on without it
        for (const char key : keys) {
            if (key == '\0' || !isOpen()) break;
            onKey(key);
        }
        if (isOpen()) listen();
    }

    bool isOpen() const { return input.is_open(); }

    void close() {
        if (!isOpen()) return;
        ::tcsetattr(STDIN_FILENO, TCSANOW, &before);
        error_code ignored;
        input.close(ignored);
    }

    boost::asio::posix::stream_descriptor input;
    const std::function<void(char key)> onKey;
    termios before{};
};

Keyboard::Keyboard(const boost::asio::any_io_executor& executor, std::function<void(char key)> onKey)
    : state_(std::make_shared<State>(executor, std::move(onKey))) {
    if (state_->open()) state_->listen();
}

Keyboard::~Keyboard() { close(); }

bool Keyboard::isOpen() const { return state_->isOpen(); }

void Keyboard::close() { state_->close(); }

} // namespace tarnly::client
