#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tarnly::simulator {

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
