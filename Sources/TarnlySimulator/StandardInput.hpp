#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <functional>
#include <memory>
#include <string>

namespace tarnly::simulator {

/// Reads this process's standard input line by line, whether it is a terminal, a pipe or a file. Its end is
/// the end of nothing else. Belongs to the thread that runs its executor; there is one of it at most.
class StandardInput {
  public:
    /// `onLine` is told of each line without its line feed, and of what stands behind the last one. A line of
    /// more than 64 KiB is cut there.
    StandardInput(boost::asio::any_io_executor executor, std::function<void(const std::string&)> onLine);

    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;

    /// Reads no further.
    ~StandardInput();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly::simulator
