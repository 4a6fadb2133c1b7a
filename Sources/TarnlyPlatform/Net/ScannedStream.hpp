#pragma once

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/compose.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/FrameScanner.hpp"

namespace tarnly {

/// The TCP stream beneath the WebSocket library: shows incoming frames to a `FrameScanner`, and knows when
/// the peer last took something.
class ScannedStream {
  public:
    using executor_type = boost::asio::ip::tcp::socket::executor_type;

    ScannedStream(boost::asio::ip::tcp::socket socket, const Clock& clock)
        : socket_(std::move(socket)), clock_(clock), lastProgress_(clock.now()) {}

    executor_type get_executor() { return socket_.get_executor(); }
    boost::asio::ip::tcp::socket& next_layer() { return socket_; }
    FrameScanner& scanner() { return scanner_; }
    Clock::TimePoint lastProgress() const { return lastProgress_; }
    std::optional<Clock::TimePoint> lastByteAt() const { return lastByteAt_; }
    void noteProgress() { lastProgress_ = clock_.now(); }

    /// From here on the incoming bytes are frames; `received` are the first of them.
    void startScanning(std::string received) {
        headEndSeen_ = headEnd().size();
        received_ = std::move(received);
        scanFrames({reinterpret_cast<unsigned char*>(received_.data()), received_.size()});
    }

    template <typename Buffers, typename Token>
    auto async_read_some(const Buffers& buffers, Token&& token) {
        auto step = [this, buffers, isStarted = false](auto& self, boost::system::error_code error = {},
                                                       std::size_t size = 0) mutable {
            if (!isStarted) {
                isStarted = true;
                if (received_.empty()) {
                    socket_.async_read_some(buffers, std::move(self));
                    return;
                }
                const auto taken = takeReceived(buffers);
                boost::asio::post(socket_.get_executor(), [self = std::move(self), taken]() mutable {
                    self.complete(boost::system::error_code{}, taken);
                });
                return;
            }
            if (size > 0) scan(buffers, size);
            self.complete(error, size);
        };
        return boost::asio::async_compose<Token, void(boost::system::error_code, std::size_t)>(
            std::move(step), token, socket_);
    }

    template <typename Buffers, typename Token>
    auto async_write_some(const Buffers& buffers, Token&& token) {
        auto step = [this, buffers, isStarted = false](auto& self, boost::system::error_code error = {},
                                                       std::size_t size = 0) mutable {
            if (!isStarted) {
                isStarted = true;
                socket_.async_write_some(buffers, std::move(self));
                return;
            }
            if (size > 0) noteProgress();
            self.complete(error, size);
        };
        return boost::asio::async_compose<Token, void(boost::system::error_code, std::size_t)>(
            std::move(step), token, socket_);
    }

  private:
    static constexpr std::string_view headEnd() { return "\r\n\r\n"; }

    template <typename Buffers>
    std::size_t takeReceived(const Buffers& buffers) {
        const auto size = boost::asio::buffer_copy(buffers, boost::asio::buffer(received_));
        received_.erase(0, size);
        return size;
    }

    template <typename Buffers>
    void scan(const Buffers& buffers, std::size_t size) {
        const auto end = boost::asio::buffer_sequence_end(buffers);
        for (auto i = boost::asio::buffer_sequence_begin(buffers); size > 0 && i != end; ++i) {
            const boost::asio::mutable_buffer piece(*i);
            const std::span bytes(static_cast<unsigned char*>(piece.data()), std::min(size, piece.size()));
            scanFrames(skipHead(bytes));
            size -= bytes.size();
        }
    }

    void scanFrames(std::span<unsigned char> bytes) {
        if (bytes.empty()) return;
        lastByteAt_ = clock_.now();
        scanner_.scan(bytes);
    }

    /// What is left of the bytes behind the head of the opening handshake: frames may come in one packet with
    /// it.
    std::span<unsigned char> skipHead(std::span<unsigned char> bytes) {
        while (headEndSeen_ < headEnd().size() && !bytes.empty()) {
            const auto next = static_cast<char>(bytes.front());
            if (next == headEnd()[headEndSeen_]) {
                ++headEndSeen_;
            } else {
                headEndSeen_ = next == headEnd().front() ? 1 : 0;
            }
            bytes = bytes.subspan(1);
        }
        return bytes;
    }

    boost::asio::ip::tcp::socket socket_;
    const Clock& clock_;
    FrameScanner scanner_;
    std::size_t headEndSeen_ = 0;
    std::string received_;
    Clock::TimePoint lastProgress_;
    std::optional<Clock::TimePoint> lastByteAt_;
};

} // namespace tarnly
