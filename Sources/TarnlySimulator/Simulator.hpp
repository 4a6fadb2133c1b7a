#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlySimulator/Api/Orders.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// How a stand-in simulator starts.
struct SimulatorOptions : WorldOptions {
    /// Of the web interface and of the situation datagrams; 0: chosen by the system.
    std::uint16_t port = 8086;
    std::uint16_t udpPort = 49000;

    /// The age at which every WebSocket is dropped.
    std::optional<std::chrono::milliseconds> dropAfter;

    /// Whether the program takes `Orders` on its standard input.
    bool takesOrders = false;

    /// Told of each situation loaded, and of each datagram that was ignored, with one line for people.
    std::function<void(const std::string&)> onSituation;
    std::function<void(const std::string&)> onIgnored;
};

/// A stand-in for the flight simulator on the loopback address: its web interface (HTTP and WebSocket on one
/// port) and its UDP port for loading situations, with a flight behind them that goes on by itself.
///
/// Belongs to the thread that runs its executor.
class Simulator {
  public:
    /// Listens at once. Throws `NetworkError::listenFailed`, for example when a port is in use. `clock` paces
    /// the flight and the updates, ten of them a second; it outlives all work on the executor.
    Simulator(boost::asio::any_io_executor executor, Clock& clock, SimulatorOptions options);

    /// The same with another flight, to which the options of the aircraft mean nothing.
    Simulator(boost::asio::any_io_executor executor, Clock& clock, SimulatorOptions options,
              std::unique_ptr<FlightSource> flight);

    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    /// Stops.
    ~Simulator();

    std::uint16_t port() const;
    std::uint16_t udpPort() const;

    /// To look into and to change between two steps of the executor.
    World& world();

    /// WebSockets that are open.
    std::size_t connections() const;

    /// Hangs up on every WebSocket.
    void dropConnections();

    /// What clients see of a restart: all connections are reset, nobody listens for as long as it takes, and
    /// ids are others.
    void restart(const Restart& how = {});

    /// Carries out one line of `Orders`. Throws `ApiError` when it is none.
    void obey(std::string_view order);

    /// Frees the ports and hangs up. Harmless when repeated.
    void stop();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnly::simulator
