#pragma once

#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/asio/write.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly::test {

/// The first bytes of frames that are whole messages.
inline constexpr unsigned finalText = 0x81;
inline constexpr unsigned finalBinary = 0x82;
inline constexpr unsigned finalClose = 0x88;
inline constexpr unsigned finalPing = 0x89;
inline constexpr unsigned finalPong = 0x8A;

/// A TCP peer that writes what bytes it likes: for what a well-behaved client cannot do.
class RawPeer {
  public:
    explicit RawPeer(boost::asio::io_context& io) : socket_(io) {}

    Task<> connect(Endpoint endpoint) {
        const boost::asio::ip::tcp::endpoint peer(boost::asio::ip::make_address(endpoint.host),
                                                  endpoint.port);
        co_await socket_.async_connect(peer, boost::asio::use_awaitable);
    }

    Task<> write(std::string bytes) {
        const auto buffer = boost::asio::buffer(bytes);
        co_await boost::asio::async_write(socket_, buffer, boost::asio::use_awaitable);
    }

    /// Exactly `size` bytes, or fewer when the other side ends the connection.
    Task<std::string> read(std::size_t size) {
        std::string bytes(size, '\0');
        const auto buffer = boost::asio::buffer(bytes);
        constexpr auto token = boost::asio::as_tuple(boost::asio::use_awaitable);
        auto [error, count] = co_await boost::asio::async_read(socket_, buffer, token);
        bytes.resize(count);
        co_return bytes;
    }

    /// What comes next; nothing once the other side has ended the connection.
    Task<std::string> readSome() {
        std::string bytes(64 * 1024, '\0');
        const auto buffer = boost::asio::buffer(bytes);
        constexpr auto token = boost::asio::as_tuple(boost::asio::use_awaitable);
        auto [error, count] = co_await socket_.async_read_some(buffer, token);
        bytes.resize(count);
        co_return bytes;
    }

    Task<std::string> readUntilEnd() {
        auto bytes = co_await read(16 * 1024 * 1024);
        co_return bytes;
    }

    /// The opening handshake of a WebSocket.
    Task<> upgrade(Endpoint endpoint, std::string sentAlong = {}) {
        co_await connect(std::move(endpoint));
        co_await write(
            "GET / HTTP/1.1\r\nHost: x\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
            "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n" +
            std::move(sentAlong));
        std::string head;
        auto buffer = boost::asio::dynamic_buffer(head);
        const auto size =
            co_await boost::asio::async_read_until(socket_, buffer, "\r\n\r\n", boost::asio::use_awaitable);
        static_cast<void>(size);
    }

    /// A masked frame as a client sends it, with a payload of up to 125 bytes.
    static std::string frame(unsigned first, std::string_view payload) {
        constexpr std::array<unsigned char, 4> mask{0x12, 0x34, 0x56, 0x78};
        std::string bytes{static_cast<char>(first), static_cast<char>(0x80 | payload.size())};
        bytes.append(mask.begin(), mask.end());
        for (std::size_t i = 0; i < payload.size(); ++i) {
            bytes += static_cast<char>(static_cast<unsigned char>(payload[i]) ^ mask[i % 4]);
        }
        return bytes;
    }

    /// Says that no more comes from here.
    void endSending() {
        boost::system::error_code ignored;
        socket_.shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    }

    boost::asio::ip::tcp::socket& socket() { return socket_; }

  private:
    boost::asio::ip::tcp::socket socket_;
};

/// What one gets, up to the end, who connects and writes `bytes`.
inline Task<std::string> converse(boost::asio::io_context& io, Endpoint endpoint, std::string bytes) {
    RawPeer peer(io);
    co_await peer.connect(endpoint);
    co_await peer.write(std::move(bytes));
    auto answer = co_await peer.readUntilEnd();
    co_return answer;
}

} // namespace tarnly::test
