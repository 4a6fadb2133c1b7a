#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "Fuzz/Targets.hpp"
#include "TarnlyPlatform/Net/WebSocketCodec.hpp"

/// What holds for whatever bytes a peer sends, and for whatever we send. An input is a byte that chooses the
/// side, the limit and the pieces, and the bytes of one direction of a WebSocket.
///
/// Millions of inputs a minute: so logs are plain bytes, and keep their memory from one input to the next.
namespace tarnly::fuzz {
namespace {

using Kind = WebSocketEvent::Kind;

struct Choice {
    WebSocketSide side;
    std::size_t limit;
    std::size_t pieceSize;

    explicit Choice(unsigned byte)
        : side((byte & 1) != 0 ? WebSocketSide::client : WebSocketSide::server),
          limit((byte & 2) != 0 ? 100 : 100'000),
          pieceSize(1 + (byte >> 2)) {}
};

/// What a decoder told, the pieces of each text put together.
struct Log {
    std::string entries;
    std::string begun;

    void clear() {
        entries.clear();
        begun.clear();
    }

    void add(const WebSocketEvent& event) {
        if (event.kind == Kind::textPiece) {
            begun += event.bytes;
            return;
        }
        const bool isText = event.kind == Kind::textEnd;
        const std::string_view bytes = isText ? begun : event.bytes;
        const auto code = static_cast<unsigned>(event.code);
        for (const auto number : {static_cast<std::size_t>(event.kind), code % 256UL, code / 256UL,
                                  bytes.size() % 256, bytes.size() / 256}) {
            entries += static_cast<char>(number);
        }
        entries += bytes;
        if (isText) begun.clear();
    }

    bool operator==(const Log&) const = default;
};

/// The bytes lie in memory of just their size, so that AddressSanitizer sees what is read beyond. As they are
/// unmasked in place, what a decoder takes from beyond its piece differs from what it gets with the next.
void decode(std::string_view bytes, const Choice& choice, std::size_t pieceSize, Log& log) {
    const auto memory = std::make_unique<char[]>(bytes.size());
    std::ranges::copy(bytes, memory.get());
    const std::span all(memory.get(), bytes.size());
    WebSocketDecoder decoder(choice.side, choice.limit);
    bool hasEnded = false;
    log.clear();
    for (std::size_t at = 0; at < bytes.size(); at += pieceSize) {
        auto input = all.subspan(at, std::min(pieceSize, bytes.size() - at));
        while (const auto event = decoder.next(input)) {
            require(!hasEnded, "nothing follows the end");
            hasEnded = event->kind == Kind::close || event->kind == Kind::violation;
            require(event->kind != Kind::textPiece || !event->bytes.empty(), "a piece has content");
            require(event->kind != Kind::ping || event->bytes.size() <= 125, "a ping is short");
            require(event->kind != Kind::pong || event->bytes.size() <= 125, "a pong is short");
            log.add(*event);
            require(log.begun.size() <= choice.limit, "a message is within the limit");
            require(hasEnded || decoder.announcedSize() <= choice.limit, "announced within the limit");
            require(hasEnded || log.begun.size() <= decoder.announcedSize(), "no more than announced");
        }
        require(input.empty(), "the input has been used up");
    }
}

/// `text` in two fragments and a ping between them, as we send it, is read by the other side as it was.
void sendAndRead(std::string_view text, const Choice& choice) {
    using Opcode = WebSocketOpcode;
    static std::string bytes;
    static Log log;
    static Log expected;
    bytes.clear();
    expected.clear();
    const auto put = [&](Opcode opcode, bool isFinal, std::string_view payload) {
        std::optional<WebSocketMask> mask;
        if (choice.side == WebSocketSide::server) {
            const auto varied = static_cast<unsigned char>(choice.pieceSize);
            mask = WebSocketMask{varied, static_cast<unsigned char>(payload.size()), 0x5A, 0xFF};
        }
        bytes += WebSocketFrameHeader(opcode, isFinal, payload.size(), mask).bytes();
        const auto start = bytes.size();
        bytes += payload;
        if (!mask) return;
        const auto sent = std::span(bytes).subspan(start);
        const auto half = sent.size() / 2;
        applyMask(sent.first(half), *mask);
        applyMask(sent.subspan(half), *mask, half);
    };
    const auto split = std::min(choice.pieceSize, text.size());
    const auto pinged = text.substr(0, 125);
    put(Opcode::text, false, text.substr(0, split));
    put(Opcode::ping, true, pinged);
    put(Opcode::continuation, true, text.substr(split));
    expected.add({Kind::ping, pinged});
    expected.add({Kind::textPiece, text});
    expected.add({Kind::textEnd});

    auto exactly = choice;
    exactly.limit = text.size();
    decode(bytes, exactly, choice.pieceSize, log);
    require(log == expected, "what is sent arrives as it was");
}

} // namespace

void webSocketDecoder(std::string_view input) {
    if (input.empty()) return;
    const Choice choice(static_cast<unsigned char>(input[0]));
    const auto bytes = input.substr(1);
    static Log whole;
    static Log inPieces;
    decode(bytes, choice, std::max<std::size_t>(bytes.size(), 1), whole);
    decode(bytes, choice, choice.pieceSize, inPieces);
    require(inPieces == whole, "the same wherever it is split");
    sendAndRead(bytes, choice);
}

} // namespace tarnly::fuzz
