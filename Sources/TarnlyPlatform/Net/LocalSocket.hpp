#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"

/// A word between two programs of one person on one computer: who connects to the socket is sent one text.
namespace tarnly {

/// Answers on a socket in the file system that its owner alone can reach.
///
/// One process at a time has the socket of a name. What a process left behind that was killed is replaced;
/// that a living one has it is told by a lock beside it, `FILE.lock`, which stays. Belongs to the thread of
/// its executor.
class LocalListener {
  public:
    /// The text for one who asks. Not itself a coroutine with captures: it calls one and hands it what it
    /// needs. What it throws costs this one the answer.
    using Answer = std::function<Task<std::string>()>;

    /// Listens at once. The length of the path does not matter. Throws `NetworkError::listenFailed`, with
    /// what helps, when another process has the socket or it cannot be made. `clock` must outlive all that
    /// runs on `executor`.
    LocalListener(boost::asio::any_io_executor executor, Clock& clock, const std::filesystem::path& file,
                  Answer answer);

    LocalListener(const LocalListener&) = delete;
    LocalListener& operator=(const LocalListener&) = delete;

    /// Closes, and removes the socket, for which it may have to wait for a disk.
    ~LocalListener();

    /// Listens no longer, and tells the answering that is under way to end.
    void close();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

/// The answer of who listens at `file`. Blocks for `limit` at most. Throws `NetworkError`: `connectionFailed`
/// when nobody listens, `timedOut`, and `connectionClosed` for an answer that does not end.
std::string askLocally(const std::filesystem::path& file, std::chrono::milliseconds limit);

} // namespace tarnly
