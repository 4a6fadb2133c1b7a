#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnly::simulator {

/// What a server sends on one connection, piece by piece, and what is let through of it: everything until it
/// has agreed to become a WebSocket, and frame by frame after that. A value, without sockets.
class FrameFilter {
  public:
    struct Wish {
        bool dropsPongs = false;
        /// Let half of the next message through, and nothing after it.
        bool stopsMidMessage = false;
    };

    /// What is let through of `bytes` and of what was held back before it. A head or a frame's header that
    /// has not arrived as a whole is held back.
    std::string pass(std::string_view bytes, Wish wish);

    /// Whether a message has been stopped in the middle: nothing is let through any more.
    bool hasStopped() const { return stage_ == Stage::stopped; }

  private:
    enum class Stage { unknown, plain, head, header, payload, stopped };

    /// Each takes what it understands from the front of `held_`, and answers whether it took anything.
    bool step(std::string& out, Wish wish);
    bool decide();
    bool passHead(std::string& out);
    bool passHeader(std::string& out, Wish wish);
    bool passPayload(std::string& out);
    void take(std::size_t size, std::string* out);

    Stage stage_ = Stage::unknown;
    std::string held_;
    /// Bytes of `held_` that are done with.
    std::size_t taken_ = 0;
    std::uint64_t payloadLeft_ = 0;
    bool isDropped_ = false;
    bool isHalved_ = false;
};

} // namespace tarnly::simulator
