#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstddef>
#include <functional>
#include <memory>

namespace tarnly::client {

struct TerminalSize {
    std::size_t columns = 80;
    std::size_t rows = 24;
};

/// Whether a person sees what goes to standard output, so that it can be written over. From any thread.
bool isOutputATerminal();

/// Of the terminal that standard output is; the usual size where it does not tell. From any thread.
TerminalSize outputSize();

/// Single keys of the person at standard input, which need no Enter and are not shown. Where that is no
/// terminal, or this process is not in its foreground, no key ever comes.
///
/// The terminal is as it was once this object is gone: who wants that on a signal as well takes the signal.
/// One at a time; belongs to the thread that runs the executor.
class Keyboard {
  public:
    /// `onKey` is called with each key until this object is destroyed.
    Keyboard(const boost::asio::any_io_executor& executor, std::function<void(char key)> onKey);
    ~Keyboard();

    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// Whether keys can come.
    bool isOpen() const;

    /// No key comes any more, and the terminal is as it was.
    void close();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly::client
