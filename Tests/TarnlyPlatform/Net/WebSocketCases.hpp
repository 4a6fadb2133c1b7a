#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnly::test {

/// What a client may send to a server that returns each text, and what it is to get. The groups are those
/// that tests of WebSocket servers have in common, by their numbers: 1 framing, 2 pings and pongs, 3 reserved
/// bits, 4 opcodes, 5 fragmentation, 6 UTF-8, 7 closing, 10 messages in many fragments.
///
/// Two expectations are this system's own: a binary message is dropped, and bytes that are not UTF-8 become
/// U+FFFD instead of ending the connection.
struct WebSocketCase {
    /// Group, part and number: "6.4.1".
    std::string name;
    /// What is written, write by write; most are whole frames.
    std::vector<std::string> sent;
    std::vector<std::string> texts{};
    /// What the pongs carry.
    std::vector<std::string> pongs{};
    /// Of the close frame that ends the connection; 1005 stands for one without a code. Absent: it lives on.
    std::optional<std::uint16_t> closeCode{};
};

std::vector<WebSocketCase> webSocketCases();

} // namespace tarnly::test
