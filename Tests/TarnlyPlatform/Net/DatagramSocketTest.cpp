#include "TarnlyPlatform/Net/DatagramSocket.hpp"

#include <gtest/gtest.h>

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <string>

#include "Support/RunTask.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

using boost::asio::ip::udp;

class DatagramSocketTest : public testing::Test {
  protected:
    std::vector<std::byte> received() {
        std::vector<std::byte> bytes(100'000);
        bytes.resize(receiver.receive(boost::asio::buffer(bytes)));
        return bytes;
    }

    NetworkError failureOf(Endpoint endpoint, std::vector<std::byte> bytes) {
        try {
            test::runTask(io, sendDatagram(std::move(endpoint), std::move(bytes)));
        } catch (const NetworkError& error) {
            return error;
        }
        throw std::logic_error("sent");
    }

    boost::asio::io_context io;
    udp::socket receiver{io, udp::endpoint(boost::asio::ip::address_v4::loopback(), 0)};
    std::uint16_t port = receiver.local_endpoint().port();
};

TEST_F(DatagramSocketTest, BytesArriveAsOneDatagram) {
    const std::vector<std::byte> bytes{std::byte{0}, std::byte{255}, std::byte{7}};
    test::runTask(io, sendDatagram({"127.0.0.1", port}, bytes));
    test::runTask(io, sendDatagram({"127.0.0.1", port}, std::vector<std::byte>(161)));
    EXPECT_EQ(received(), bytes);
    EXPECT_EQ(received(), std::vector<std::byte>(161));
}

TEST_F(DatagramSocketTest, NobodyNeedsToListen) {
    receiver.close();
    for (int i = 0; i < 3; ++i)
        EXPECT_NO_THROW(test::runTask(io, sendDatagram({"127.0.0.1", port}, {})));
}

TEST_F(DatagramSocketTest, IPv6AddressWorks) {
    udp::socket receiver6(io);
    boost::system::error_code noIPv6;
    receiver6.open(udp::v6(), noIPv6);
    if (!noIPv6) receiver6.bind(udp::endpoint(boost::asio::ip::address_v6::loopback(), 0), noIPv6);
    if (noIPv6) GTEST_SKIP() << "no IPv6 on this computer";
    test::runTask(io, sendDatagram({"::1", receiver6.local_endpoint().port()}, std::vector<std::byte>(3)));
    std::array<std::byte, 10> bytes{};
    EXPECT_EQ(receiver6.receive(boost::asio::buffer(bytes)), 3U);
}

TEST_F(DatagramSocketTest, HostNamesAreResolved) {
    EXPECT_NO_THROW(test::runTask(io, sendDatagram({"localhost", port}, std::vector<std::byte>(3))));
}

TEST_F(DatagramSocketTest, DatagramThatIsTooLongFails) {
    const auto error = failureOf({"127.0.0.1", port}, std::vector<std::byte>(70'000));
    EXPECT_EQ(error.which(), NetworkError::Case::sendFailed);
    EXPECT_NE(std::string(error.what()).find("127.0.0.1:" + std::to_string(port)), std::string::npos);
}

TEST_F(DatagramSocketTest, HostWithoutAnAddressFails) {
    // Longer than a name can be, so that no name server is asked.
    const auto error = failureOf({std::string(300, 'a'), port}, std::vector<std::byte>(3));
    EXPECT_EQ(error.which(), NetworkError::Case::connectionFailed);
}

} // namespace
} // namespace tarnly
