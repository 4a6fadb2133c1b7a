#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Frames.hpp"
#include "Socket.hpp"

namespace tarnly::load {

/// A client of the companion that blocks: for what comes before a measurement, and for lone clients. Its
/// socket can be handed to an event loop afterwards.
class Client {
  public:
    /// Connects, shakes hands and pairs; throws `std::runtime_error` when the server does anything else.
    explicit Client(std::uint16_t port);

    const Descriptor& socket() const { return socket_; }
    FrameReader& reader() { return reader_; }

    void sendText(std::string_view text);

    /// The next text message, its fragments joined. Throws at the end of the connection.
    std::string receiveText();

    /// The reply to a request; pushes that come before it are passed over.
    std::string request(std::string_view text, int requestId);

  private:
    void shakeHands();
    void receiveMore();

    Descriptor socket_;
    FrameReader reader_;
    std::vector<char> room_ = std::vector<char>(65'536);
};

/// `{"type":"sim_info","req_id":ID}`, with as many bytes of padding as it takes to make it `size` bytes long.
std::string simInfoRequest(int requestId, std::size_t size = 0);

/// What the reply to it begins with.
std::string simInfoReplyBegin(int requestId);

/// A request for these names.
std::string subscriptionRequest(int requestId, std::span<const std::string> names);

} // namespace tarnly::load
