#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <map>
#include <random>

#include "Support/WebSocketFrames.hpp"
#include "TarnlyPlatform/Net/WebSocketCodec.hpp"

/// Our decoder beside another implementation of the same RFC, which reads the same bytes: valid frames, and
/// frames in which something is wrong. Where the two differ on purpose stands in `isSame`.
namespace tarnly {
namespace {

namespace asio = boost::asio;
namespace websocket = boost::beast::websocket;
using Code = WebSocketCloseCode;
using Entry = test::WebSocketLog::Entry;
using Entries = std::vector<Entry>;
using Frame = test::WebSocketFrame;
using EventKind = WebSocketEvent::Kind;

// What the other one reads

/// The far end of a connection: gives the bytes that it was made with in pieces, and then ends.
class Bytes {
  public:
    using executor_type = asio::io_context::executor_type;

    Bytes(asio::io_context& io, std::string incoming, std::size_t pieceSize)
        : executor_(io.get_executor()), incoming_(std::move(incoming)), pieceSize_(pieceSize) {}

    executor_type get_executor() const { return executor_; }
    const std::string& written() const { return written_; }
    void give(std::string bytes) { incoming_ = std::move(bytes); }
    /// Called once, when all has been read.
    void onStarved(std::function<void()> handler) { onStarved_ = std::move(handler); }

    std::size_t read_some(const auto& buffers, boost::system::error_code& error) {
        if (at_ == incoming_.size() && onStarved_) std::exchange(onStarved_, {})();
        if (at_ == incoming_.size()) error = asio::error::eof;
        const auto size = std::min(pieceSize_, incoming_.size() - at_);
        const auto taken = asio::buffer_copy(buffers, asio::buffer(incoming_.data() + at_, size));
        at_ += taken;
        return taken;
    }

    std::size_t write_some(const auto& buffers, boost::system::error_code&) {
        const auto before = written_.size();
        written_.resize(before + asio::buffer_size(buffers));
        return asio::buffer_copy(asio::buffer(written_.data() + before, written_.size() - before), buffers);
    }

    std::size_t read_some(const auto& buffers) { return throwing(&Bytes::read_some, buffers); }
    std::size_t write_some(const auto& buffers) { return throwing(&Bytes::write_some, buffers); }

    friend void teardown(boost::beast::role_type, Bytes&, boost::system::error_code&) {}

  private:
    std::size_t throwing(auto operation, const auto& buffers) {
        boost::system::error_code error;
        const auto size = (this->*operation)(buffers, error);
        if (error) throw boost::system::system_error(error);
        return size;
    }

    executor_type executor_;
    std::string incoming_;
    std::size_t at_ = 0;
    std::size_t pieceSize_;
    std::string written_;
    std::function<void()> onStarved_;
};

using Other = websocket::stream<Bytes>;

struct Input {
    std::string bytes;
    WebSocketSide own = WebSocketSide::server;
    std::size_t limit = 0;
    std::size_t pieceSize = 0;
};

constexpr const char* openingRequest =
    "GET / HTTP/1.1\r\nHost: x\r\nConnection: Upgrade\r\nUpgrade: websocket\r\n"
    "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n";

std::unique_ptr<Other> opened(asio::io_context& io, const Input& input) {
    if (input.own == WebSocketSide::server) {
        auto server = std::make_unique<Other>(io, openingRequest + input.bytes, input.pieceSize);
        server->accept();
        return server;
    }
    auto client = std::make_unique<Other>(io, std::string(), input.pieceSize);
    auto& far = client->next_layer();
    far.onStarved([&] {
        Other server(io, far.written(), 1000);
        server.accept();
        far.give(server.next_layer().written() + input.bytes);
    });
    client->handshake("x", "/");
    return client;
}

/// Only there; ours has no such end.
const Entry textIsNotUtf8{EventKind::violation, "of a text", Code::notUtf8};

Entry endedBy(const boost::system::error_code& error, const websocket::close_reason& reason) {
    using Error = websocket::error;
    if (error == Error::closed) {
        const auto code = reason.code == websocket::close_code::none ? Code::none : Code{reason.code};
        return {EventKind::close, std::string(reason.reason.data(), reason.reason.size()), code};
    }
    if (error == Error::message_too_big) return {EventKind::violation, {}, Code::tooBig};
    if (error == Error::bad_frame_payload) return textIsNotUtf8;
    const bool isReason = error == Error::bad_close_payload;
    return {EventKind::violation, {}, isReason ? Code::notUtf8 : Code::protocolError};
}

Entries readByOther(const Input& input) {
    asio::io_context io;
    const auto other = opened(io, input);
    Entries entries;
    other->read_message_max(input.limit);
    other->control_callback([&](websocket::frame_type type, boost::beast::string_view payload) {
        const std::string bytes(payload.data(), payload.size());
        if (type == websocket::frame_type::ping) entries.push_back({EventKind::ping, bytes});
        if (type == websocket::frame_type::pong) entries.push_back({EventKind::pong, bytes});
    });
    for (;;) {
        boost::beast::flat_buffer buffer;
        boost::system::error_code error;
        other->read(buffer, error);
        if (error == asio::error::eof) return entries;
        if (error) {
            entries.push_back(endedBy(error, other->reason()));
            return entries;
        }
        const std::string_view content(static_cast<const char*>(buffer.data().data()), buffer.size());
        if (other->got_text()) {
            entries.push_back({EventKind::textEnd, std::string(content)});
        } else {
            entries.push_back({EventKind::binaryEnd});
        }
    }
}

Entries readByUs(const Input& input) {
    return test::decoded(input.bytes, input.pieceSize, input.own, input.limit).entries;
}

// Where they differ on purpose

bool isEnd(const Entry& entry) {
    return entry.kind == EventKind::close || entry.kind == EventKind::violation;
}

/// Of two ends in the same place.
bool isWanted(const Entry& ours, const Entry& theirs) {
    const auto isViolation = [](const Entry& entry, Code code) {
        return entry.kind == EventKind::violation && entry.code == code;
    };
    // The close code 1014 was registered later: it is taken here, and its reason looked at.
    const bool isTakenHere =
        (ours.kind == EventKind::close && ours.code == Code{1014}) || isViolation(ours, Code::notUtf8);
    if (isTakenHere && isViolation(theirs, Code::protocolError)) return true;
    if (!isViolation(ours, Code::protocolError)) return false;
    // Codes from 5000 on have no meaning: they are refused here, before their reason.
    constexpr Code firstWithoutMeaning{5000};
    if (theirs.kind == EventKind::close && theirs.code >= firstWithoutMeaning) return true;
    if (isViolation(theirs, Code::notUtf8)) return true;
    // A length of 2^63 or more, which the RFC excludes, is just a long one there.
    return isViolation(theirs, Code::tooBig);
}

bool isSame(const Entries& ours, const Entries& theirs) {
    if (ours == theirs) return true;
    if (theirs.empty() || !isEnd(theirs.back())) return false;
    const Entries before(theirs.begin(), theirs.end() - 1);
    if (ours.size() < before.size() || !std::equal(before.begin(), before.end(), ours.begin())) return false;
    if (ours.size() == theirs.size() && isEnd(ours.back()) && isWanted(ours.back(), theirs.back()))
        return true;
    // Text that is not UTF-8 ends a connection there, and here its reader mends it.
    if (theirs.back() == textIsNotUtf8) return true;
    // A frame is judged here when its header is complete, there by its first two bytes: which shows where the
    // input ends between the two.
    return theirs.back() == Entry{EventKind::violation, {}, Code::protocolError} &&
           ours.size() == before.size();
}

// Frames right and wrong

class RandomFrames {
  public:
    explicit RandomFrames(unsigned seed) : random_(seed) {}

    Input input() {
        Input result;
        result.own = isOneIn(3) ? WebSocketSide::client : WebSocketSide::server;
        result.limit = isOneIn(3) ? below(400) + 1 : 1 << 20;
        result.pieceSize = isOneIn(2) ? below(20) + 1 : 100'000;
        isMasked_ = result.own == WebSocketSide::server;
        const auto wrongOne = below(12); // of up to eight
        for (unsigned i = 0, count = 1 + below(8); i < count; ++i) {
            auto frame = next();
            if (i == wrongOne) spoil(frame);
            result.bytes += frame.bytes();
        }
        if (isOneIn(4)) spoil(result.bytes);
        return result;
    }

  private:
    unsigned below(std::size_t end) {
        return std::uniform_int_distribution<unsigned>(0, static_cast<unsigned>(end - 1))(random_);
    }
    bool isOneIn(unsigned count) { return below(count) == 0; }

    std::string payload(std::size_t size) {
        std::string result(size, ' ');
        for (auto& character : result) {
            character = static_cast<char>(' ' + below(95));
        }
        return result;
    }

    std::string closing() {
        constexpr std::array reasons{"",     "bye", "caf\xC3\xA9", "\xED\xA0\x80", "\xF4\x8F\xBF\xBF",
                                     "\xC3", "\x80"};
        if (isOneIn(4)) return {};
        const auto code = isOneIn(2) ? 1000 + below(20) : isOneIn(2) ? 2990 + below(20) : 4990 + below(20);
        return std::string{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)} +
               reasons.at(below(reasons.size()));
    }

    /// One that may follow the last.
    Frame next() {
        constexpr std::array<std::size_t, 9> sizes{0, 1, 5, 30, 125, 126, 127, 500, 66000};
        Frame frame;
        if (!isMasked_) {
            frame.mask.reset();
        } else {
            for (auto& byte : *frame.mask) {
                byte = static_cast<unsigned char>(below(256));
            }
        }
        if (isOneIn(12)) {
            frame.opcode = 0x8;
            frame.payload = closing();
        } else if (isOneIn(3)) {
            frame.opcode = 0x9 + below(2);
            frame.payload = payload(below(126));
        } else {
            frame.opcode = isInMessage_ ? 0x0 : 0x1 + below(2);
            frame.isFinal = !isOneIn(2);
            isInMessage_ = !frame.isFinal;
            frame.payload = payload(sizes.at(below(isOneIn(20) ? sizes.size() : sizes.size() - 1)));
        }
        return frame;
    }

    void spoil(Frame& frame) {
        constexpr std::array<std::uint64_t, 6> lengths{0, 125, 126, 65535, 65536, 1ULL << 63};
        switch (below(8)) {
            case 0:
                frame.reserved = 1 + below(7);
                return;
            case 1:
                frame.opcode = below(16);
                return;
            case 2:
                frame.isFinal = !frame.isFinal;
                return;
            case 3:
                frame.payload += payload(126);
                return;
            case 4:
                frame.lengthBytes = isOneIn(2) ? 2 : 8;
                return;
            case 5:
                frame.length = lengths.at(below(lengths.size()));
                return;
            case 6:
                frame.payload.resize(frame.payload.size() / 2);
                return;
            default:
                break;
        }
        if (frame.mask) {
            frame.mask.reset();
        } else {
            frame.mask.emplace();
        }
    }

    void spoil(std::string& bytes) {
        const auto at = below(bytes.size());
        switch (below(4)) {
            case 0:
                bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ 1U << below(8));
                return;
            case 1:
                bytes.insert(at, 1, static_cast<char>(below(256)));
                return;
            case 2:
                bytes.erase(at, 1 + below(10));
                return;
            default:
                bytes.resize(at);
                return;
        }
    }

    std::mt19937 random_;
    bool isMasked_ = true;
    bool isInMessage_ = false;
};

TEST(WebSocketDifferential, OursAndAnotherDecoderTellTheSame) {
    constexpr unsigned count = 4000;
    std::map<EventKind, int> seen;
    std::map<Code, int> violations;
    int differing = 0;
    for (unsigned seed = 0; seed < count; ++seed) {
        const auto input = RandomFrames(seed).input();
        const auto ours = readByUs(input);
        const auto theirs = readByOther(input);
        ASSERT_TRUE(isSame(ours, theirs)) << "seed " << seed << "\nours:   " << testing::PrintToString(ours)
                                          << "\ntheirs: " << testing::PrintToString(theirs);
        differing += ours == theirs ? 0 : 1;
        for (const auto& entry : ours) {
            ++seen[entry.kind];
            if (entry.kind == EventKind::violation) ++violations[entry.code];
        }
    }
    // What the frames are worth: each event often, and few inputs on which the two differ on purpose.
    for (const auto kind :
         {EventKind::textEnd, EventKind::binaryEnd, EventKind::ping, EventKind::pong, EventKind::close}) {
        EXPECT_GT(seen[kind], 200) << static_cast<int>(kind);
    }
    EXPECT_GT(violations[Code::protocolError], 500);
    EXPECT_GT(violations[Code::tooBig], 100);
    EXPECT_GT(violations[Code::notUtf8], 20);
    EXPECT_LT(differing, 400);
}

} // namespace
} // namespace tarnly
