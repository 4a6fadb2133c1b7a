#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlySimulator/World/Quirks.hpp"

namespace tarnly::simulator {

/// The port that clients see: carries the bytes between them and the web server, which listens on a port of
/// its own, and spoils them as the quirks say. What no well-behaved server can be brought to do stands here:
/// to hang, to stop in the middle of a message, to answer no ping, to reset its connections.
///
/// A connection whose first request is for "/control" is carried through all of that, so that a fault can be
/// ended. Belongs to the thread that runs its executor.
class Gate {
  public:
    /// Listens at once; the system chooses the port if it is 0. Throws `NetworkError::listenFailed`. `clock`
    /// and `quirks` outlive all that runs on the executor.
    Gate(boost::asio::any_io_executor executor, Clock& clock, const Quirks& quirks, std::uint16_t port,
         std::uint16_t serverPort);

    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// Cancels.
    ~Gate();

    /// The same also while it is closed.
    std::uint16_t port() const;

    /// Connections that are being carried, those for control not among them.
    std::size_t connections() const;

    /// Stops listening and resets all connections, as the end of a program that crashes does.
    void close();

    /// Listens again on the same port; harmless when it does. Throws `NetworkError::listenFailed`.
    void open();

    /// Lets what the quirks held back go on once they allow it, and closes who has been idle for too long.
    /// To be called now and then.
    void look();

    /// Frees the port and hangs up. Harmless when repeated.
    void cancel();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly::simulator
