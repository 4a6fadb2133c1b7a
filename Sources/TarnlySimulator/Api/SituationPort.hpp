#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <variant>

namespace tarnly::simulator {

/// A request to load a saved situation, as it comes in one datagram.
struct Situation {
    /// Relative to the simulator's folder, for example "Output/situations/Pattern 1.sit".
    std::string path;
};

/// Why a datagram is no such request, for people.
struct UnusableDatagram {
    std::string reason;
};

/// Reads the 161 bytes of a datagram: the label "SIMO" with its NUL, the mode 1 as a 32-bit little-endian
/// integer, the path in 150 bytes padded with NUL, and two more NUL.
std::variant<Situation, UnusableDatagram> situationFrom(std::span<const std::byte> datagram);

/// Listens on a UDP port of the loopback address for requests to load a situation. Belongs to the thread that
/// runs its executor.
class SituationPort {
  public:
    using Handler = std::function<void(const std::string&)>;

    /// `onSituation` is told of the path of each usable request, `onIgnored` why a datagram was none. Throws
    /// `NetworkError::listenFailed`.
    SituationPort(boost::asio::any_io_executor executor, std::uint16_t port, Handler onSituation,
                  Handler onIgnored);

    SituationPort(const SituationPort&) = delete;
    SituationPort& operator=(const SituationPort&) = delete;

    /// Cancels.
    ~SituationPort();

    std::uint16_t port() const;

    /// Frees the port; no handler is called any more. Harmless when repeated.
    void cancel();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly::simulator
