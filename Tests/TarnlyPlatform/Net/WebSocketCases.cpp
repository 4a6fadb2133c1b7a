#include "WebSocketCases.hpp"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "Support/WebSocketFrames.hpp"

namespace tarnly::test {
namespace {

using Frame = WebSocketFrame;
using Strings = std::vector<std::string>;
using namespace std::string_literals;

constexpr std::uint16_t protocolError = 1002;
constexpr std::uint16_t notUtf8 = 1007;
constexpr std::uint16_t noCode = 1005;

std::string frame(unsigned opcode, std::string payload = {}, bool isFinal = true, unsigned reserved = 0) {
    return Frame{opcode, std::move(payload), isFinal, reserved}.bytes();
}

std::string closing(unsigned code, const std::string& reason = {}) {
    return frame(Frame::close,
                 std::string{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)} + reason);
}

Strings chopped(const std::string& bytes, std::size_t size) {
    Strings pieces;
    for (std::size_t at = 0; at < bytes.size() || pieces.empty(); at += size) {
        pieces.push_back(bytes.substr(at, size));
    }
    return pieces;
}

/// One text message, a frame a fragment.
Strings fragments(const Strings& pieces) {
    Strings frames;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        frames.push_back(
            frame(i == 0 ? Frame::text : Frame::continuation, pieces[i], i + 1 == pieces.size()));
    }
    return frames;
}

std::string joined(const Strings& pieces) {
    std::string whole;
    for (const auto& piece : pieces) {
        whole += piece;
    }
    return whole;
}

std::string repeated(const std::string& piece, std::size_t count) { return joined(Strings(count, piece)); }

/// The sequences of bytes that are UTF-8 (the Unicode Standard, table 3-7), each byte as a range.
struct Range {
    unsigned char first;
    unsigned char last;
};
using Sequence = std::vector<Range>;

const std::vector<Sequence>& wellFormedSequences() {
    constexpr Range tail{0x80, 0xBF};
    static const std::vector<Sequence> table{
        {{0x00, 0x7F}},
        {{0xC2, 0xDF}, tail},
        {{0xE0, 0xE0}, {0xA0, 0xBF}, tail},
        {{0xE1, 0xEC}, tail, tail},
        {{0xED, 0xED}, {0x80, 0x9F}, tail},
        {{0xEE, 0xEF}, tail, tail},
        {{0xF0, 0xF0}, {0x90, 0xBF}, tail, tail},
        {{0xF1, 0xF3}, tail, tail, tail},
        {{0xF4, 0xF4}, {0x80, 0x8F}, tail, tail},
    };
    return table;
}

std::size_t matching(std::string_view bytes, const Sequence& sequence) {
    std::size_t count = 0;
    while (count < std::min(bytes.size(), sequence.size())) {
        const auto byte = static_cast<unsigned char>(bytes[count]);
        if (byte < sequence[count].first || byte > sequence[count].last) break;
        ++count;
    }
    return count;
}

/// With U+FFFD for each longest part that begins a sequence and does not end it, and for each other byte.
std::string mended(std::string_view bytes) {
    std::string result;
    while (!bytes.empty()) {
        std::size_t count = 1;
        bool isSound = false;
        for (const auto& sequence : wellFormedSequences()) {
            const auto size = matching(bytes, sequence);
            count = std::max(count, size);
            isSound = isSound || size == sequence.size();
        }
        result += isSound ? bytes.substr(0, count) : "\xEF\xBF\xBD";
        bytes.remove_prefix(count);
    }
    return result;
}

class Cases {
  public:
    /// The next part of a group, for example "6.4"; its cases are numbered from 1.
    void part(std::string name) {
        part_ = std::move(name);
        number_ = 0;
    }

    WebSocketCase& add(Strings sent, Strings texts = {}, Strings pongs = {}) {
        const auto name = part_ + "." + std::to_string(++number_);
        cases_.push_back({name, std::move(sent), std::move(texts), std::move(pongs), std::nullopt});
        return cases_.back();
    }

    void addEnding(std::uint16_t code, Strings sent, Strings texts = {}, Strings pongs = {}) {
        add(std::move(sent), std::move(texts), std::move(pongs)).closeCode = code;
    }

    /// The same frames thrice: as they are, each with a write of its own, and byte by byte.
    void addThrice(const WebSocketCase& one) {
        for (const auto& sent : {Strings{joined(one.sent)}, one.sent, chopped(joined(one.sent), 1)}) {
            add(sent, one.texts, one.pongs).closeCode = one.closeCode;
        }
    }

    /// A text in one frame, whatever its bytes are.
    void addText(const std::string& bytes) { add({frame(Frame::text, bytes)}, {mended(bytes)}); }
    void addTexts(const Strings& all) {
        for (const auto& bytes : all) {
            addText(bytes);
        }
    }

    std::vector<WebSocketCase> take() { return std::move(cases_); }

  private:
    std::string part_;
    int number_ = 0;
    std::vector<WebSocketCase> cases_;
};

void addFraming(Cases& cases) {
    for (const auto opcode : {Frame::text, Frame::binary}) {
        cases.part(opcode == Frame::text ? "1.1" : "1.2");
        const auto add = [&](std::size_t size, std::size_t chop) {
            const std::string payload(size, opcode == Frame::text ? '*' : '\xFE');
            const auto echo = opcode == Frame::text ? Strings{payload} : Strings{};
            cases.add(chopped(frame(opcode, payload), chop), echo);
        };
        for (const std::size_t size : {0U, 125U, 126U, 127U, 128U, 65535U, 65536U}) {
            add(size, 1 << 20);
        }
        add(65536, 997);
    }
}

void addPings(Cases& cases) {
    cases.part("2");
    const auto bytes = "\x00\xFF\xFE\xFD\xFC\xFB\x00\xFF"s;
    const std::string longest(125, '\xFE');
    cases.add({frame(Frame::ping)}, {}, {""});
    cases.add({frame(Frame::ping, "Hello, world!")}, {}, {"Hello, world!"});
    cases.add({frame(Frame::ping, bytes)}, {}, {bytes});
    cases.add({frame(Frame::ping, longest)}, {}, {longest});
    cases.addEnding(protocolError, {frame(Frame::ping, longest + "\xFE")});
    cases.add(chopped(frame(Frame::ping, longest), 1), {}, {longest});
    cases.add({frame(Frame::pong)});
    cases.add({frame(Frame::pong, "unasked for")});
    cases.add({frame(Frame::pong, "unasked for"), frame(Frame::ping, "and asked")}, {}, {"and asked"});
    Strings pings;
    Strings payloads;
    for (int i = 0; i < 10; ++i) {
        payloads.push_back("payload-" + std::to_string(i));
        pings.push_back(frame(Frame::ping, payloads.back()));
    }
    cases.add(pings, {}, payloads);
    cases.add(chopped(joined(pings), 1), {}, payloads);
}

void addReservedBits(Cases& cases) {
    cases.part("3");
    const auto hello = frame(Frame::text, "Hello");
    cases.addEnding(protocolError, {frame(Frame::text, "x", true, 1)});
    for (unsigned reserved = 2; reserved <= 4; ++reserved) {
        const Strings frames{hello, frame(Frame::text, "x", true, reserved), frame(Frame::ping)};
        const std::array ways{Strings{joined(frames)}, frames, chopped(joined(frames), 1)};
        cases.addEnding(protocolError, ways.at(reserved - 2), {"Hello"});
    }
    cases.addEnding(protocolError, {frame(Frame::binary, "\xFF\xFE", true, 5)});
    cases.addEnding(protocolError, {frame(Frame::ping, "x", true, 6)});
    cases.addEnding(protocolError, {frame(Frame::close, {}, true, 7)});
}

void addOpcodes(Cases& cases) {
    const auto hello = frame(Frame::text, "Hello");
    for (const unsigned first : {0x3U, 0xBU}) {
        cases.part(first == 0x3 ? "4.1" : "4.2");
        cases.addEnding(protocolError, {frame(first)});
        cases.addEnding(protocolError, {frame(first + 1, "reserved")});
        cases.addEnding(protocolError, {hello + frame(first + 2) + frame(Frame::ping)}, {"Hello"});
        cases.addEnding(protocolError, {hello, frame(first + 3, "reserved"), frame(Frame::ping)}, {"Hello"});
        const auto bytes = hello + frame(first + 4, "reserved") + frame(Frame::ping);
        cases.addEnding(protocolError, chopped(bytes, 1), {"Hello"});
    }
}

void addFragmentation(Cases& cases) {
    cases.part("5");
    const auto first = frame(Frame::text, "fragment1", false);
    const auto last = frame(Frame::continuation, "fragment2");
    const auto both = "fragment1fragment2"s;
    const auto more = frame(Frame::text, "Hello");
    cases.addEnding(protocolError, {frame(Frame::ping, "fragment1", false), last});
    cases.addEnding(protocolError, {frame(Frame::pong, "fragment1", false), last});
    cases.addThrice({{}, {first, last}, {both}});
    cases.addThrice({{}, {first, frame(Frame::ping, "ping"), last}, {both}, {"ping"}});
    for (const bool isFinal : {true, false}) {
        cases.addThrice(
            {{}, {frame(Frame::continuation, "of nothing", isFinal), more}, {}, {}, protocolError});
    }
    cases.addEnding(protocolError, {first, last, frame(Frame::continuation, "of nothing", false), more},
                    {both});
    for (const bool isFinal : {false, true}) {
        const auto nothing = frame(Frame::continuation, "fragment1", isFinal);
        const auto round =
            nothing + frame(Frame::text, "fragment2", false) + frame(Frame::continuation, "fragment3");
        cases.addEnding(protocolError, {round + round});
    }
    cases.addEnding(protocolError, {first, frame(Frame::text, "fragment2")});
    const Strings five{first,
                       frame(Frame::continuation, "fragment2", false),
                       frame(Frame::ping, "ping 1"),
                       frame(Frame::continuation, "fragment3", false),
                       frame(Frame::continuation, "fragment4", false),
                       frame(Frame::ping, "ping 2"),
                       frame(Frame::continuation, "fragment5")};
    const auto whole = both + "fragment3fragment4fragment5";
    cases.add({joined(five)}, {whole}, {"ping 1", "ping 2"});
    cases.add(five, {whole}, {"ping 1", "ping 2"});
}

const auto kosme = "\xCE\xBA\xE1\xBD\xB9\xCF\x83\xCE\xBC\xCE\xB5"s;

/// One frame or several, and pieces that do not end where characters do.
void addTextsInPieces(Cases& cases) {
    cases.part("6.1");
    for (const auto& pieces : {Strings{""}, Strings{"", "", ""}, Strings{"", "middle frame payload", ""}}) {
        cases.add(fragments(pieces), {joined(pieces)});
    }
    cases.part("6.2");
    const auto hello = "Hello-\xC2\xB5@\xC3\x9F\xC3\xB6\xC3\xA4-UTF-8!!"s;
    for (const auto& pieces : {Strings{hello}, Strings{hello.substr(0, 8), hello.substr(8)},
                               chopped(hello, 1), chopped(kosme, 1)}) {
        cases.add(fragments(pieces), {joined(pieces)});
    }
    cases.part("6.3");
    const auto broken = kosme + "\xED\xA0\x80"s + "edited";
    const auto brokenMended = kosme + "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"s + "edited";
    cases.add({frame(Frame::text, broken)}, {brokenMended});
    cases.add(fragments(chopped(broken, 1)), {brokenMended});
    cases.part("6.4");
    const Strings inSequence{kosme, "\xF4\x90\x80\x80", "edited"};
    const Strings withinSequence{kosme + "\xF4", "\x90", "\x80\x80"s + "edited"};
    const auto beyondMended = kosme + repeated("\xEF\xBF\xBD", 4) + "edited";
    cases.add(fragments(inSequence), {beyondMended});
    cases.add(fragments(withinSequence), {beyondMended});
    const auto bytes = frame(Frame::text, joined(inSequence));
    const auto start = bytes.size() - joined(inSequence).size();
    for (const auto second : {start + 11, start + 12}) {
        cases.add({bytes.substr(0, second), bytes.substr(second, 4), bytes.substr(second + 4)},
                  {beyondMended});
    }
}

void addBoundaries(Cases& cases) {
    cases.part("6.5"); // whole texts
    cases.addTexts(
        {"hello$world", "hello\xC2\xA2world", "hello\xE2\x82\xACworld", "hello\xF0\xA4\xAD\xA2world", kosme});
    cases.part("6.6"); // each beginning of a text
    for (std::size_t size = 1; size <= kosme.size(); ++size) {
        cases.addText(kosme.substr(0, size));
    }
    cases.part("6.7"); // the first sequence of each length
    cases.addTexts({"\x00"s, "\xC2\x80", "\xE0\xA0\x80", "\xF0\x90\x80\x80"});
    cases.part("6.8"); // the first of lengths that are no more
    cases.addTexts({"\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80"});
    cases.part("6.9"); // the last sequence of each length
    cases.addTexts({"\x7F", "\xDF\xBF", "\xEF\xBF\xBF", "\xF4\x8F\xBF\xBF"});
    cases.part("6.10"); // the last of what once was UTF-8
    cases.addTexts({"\xF7\xBF\xBF\xBF", "\xFB\xBF\xBF\xBF\xBF", "\xFD\xBF\xBF\xBF\xBF\xBF"});
    cases.part("6.11"); // about the surrogates, the replacement character and the end
    cases.addTexts({"\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBD", "\xF4\x8F\xBF\xBF", "\xF4\x90\x80\x80"});
}

std::string sequence(unsigned first, std::size_t tails, char tail) {
    return static_cast<char>(first) + std::string(tails, tail);
}

void addBrokenSequences(Cases& cases) {
    cases.part("6.12"); // continuation bytes alone
    cases.addTexts({"\x80", "\xBF"});
    for (std::size_t size = 2; size <= 6; ++size) {
        cases.addText(repeated("\x80\xBF", 3).substr(0, size));
    }
    std::string all;
    for (unsigned byte = 0x80; byte <= 0xBF; ++byte) {
        all += static_cast<char>(byte);
    }
    cases.addText(all);

    cases.part("6.13"); // first bytes alone, for sequences of 2 to 6
    constexpr std::array<unsigned, 6> firsts{0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0xFE};
    for (std::size_t i = 0; i + 1 < firsts.size(); ++i) {
        std::string lonely;
        for (unsigned byte = firsts.at(i); byte < firsts.at(i + 1); ++byte) {
            lonely += static_cast<char>(byte);
            lonely += ' ';
        }
        cases.addText(lonely);
    }

    cases.part("6.14"); // the last byte is missing
    Strings incomplete;
    for (std::size_t i = 0; i + 1 < firsts.size(); ++i) {
        incomplete.push_back(sequence(firsts.at(i), i, '\x80'));
    }
    for (std::size_t i = 0; i + 1 < firsts.size(); ++i) {
        incomplete.push_back(sequence(firsts.at(i + 1) - 1, i, '\xBF'));
    }
    cases.addTexts(incomplete);
    cases.part("6.15");
    cases.addText(joined(incomplete));
    cases.part("6.16"); // no part of UTF-8 at all
    cases.addTexts({"\xFE", "\xFF", "\xFE\xFE\xFF\xFF"});
}

/// Longer sequences than a code point needs.
void addOverlong(Cases& cases) {
    cases.part("6.17"); // the solidus
    cases.addTexts(
        {"\xC0\xAF", "\xE0\x80\xAF", "\xF0\x80\x80\xAF", "\xF8\x80\x80\x80\xAF", "\xFC\x80\x80\x80\x80\xAF"});
    cases.part("6.18"); // the highest for each length
    cases.addTexts(
        {"\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xF8\x87\xBF\xBF\xBF", "\xFC\x83\xBF\xBF\xBF\xBF"});
    cases.part("6.19"); // zero
    cases.addTexts(
        {"\xC0\x80", "\xE0\x80\x80", "\xF0\x80\x80\x80", "\xF8\x80\x80\x80\x80", "\xFC\x80\x80\x80\x80\x80"});
}

void addSurrogatesAndSpecials(Cases& cases) {
    const Strings high{"\xED\xA0\x80", "\xED\xAD\xBF", "\xED\xAE\x80", "\xED\xAF\xBF"};
    const Strings low{"\xED\xB0\x80", "\xED\xBE\x80", "\xED\xBF\xBF"};
    cases.part("6.20"); // one alone
    cases.addTexts(high);
    cases.addTexts(low);
    cases.part("6.21"); // pairs
    for (const auto& first : high) {
        cases.addText(first + low.front());
        cases.addText(first + low.back());
    }
    cases.part("6.22"); // the last two code points of each plane, which are no characters
    for (unsigned plane = 0; plane <= 16; ++plane) {
        for (const unsigned last : {0xBEU, 0xBFU}) {
            const auto upper = static_cast<char>(0x8F | (plane & 3) << 4);
            std::string bytes{static_cast<char>(0xF0 | plane >> 2), upper, '\xBF', static_cast<char>(last)};
            if (plane == 0) bytes = std::string{'\xEF', '\xBF', static_cast<char>(last)};
            cases.addText(bytes);
        }
    }
    cases.part("6.23"); // the specials, U+FFF9 to U+FFFF
    for (unsigned last = 0xB9; last <= 0xBF; ++last) {
        cases.addText(std::string{'\xEF', '\xBF', static_cast<char>(last)});
    }
}

void addClosing(Cases& cases) {
    constexpr std::uint16_t normal = 1000;
    cases.part("7.1");
    const auto bye = closing(normal);
    cases.addEnding(normal, {frame(Frame::text, "Hello"), bye}, {"Hello"});
    cases.addEnding(normal, {bye, bye});
    cases.addEnding(normal, {bye, frame(Frame::ping, "too late")});
    cases.addEnding(normal, {bye, frame(Frame::text, "too late")});
    const auto begun = frame(Frame::text, "fragment1", false);
    cases.addEnding(normal, {begun, bye, frame(Frame::continuation, "fragment2")});
    const std::string large(256 * 1024, '*');
    cases.addEnding(normal, {frame(Frame::text, large), frame(Frame::text, "Hello"), bye, frame(Frame::ping)},
                    {large, "Hello"});

    cases.part("7.3"); // lengths of what a close frame carries
    cases.addEnding(noCode, {frame(Frame::close)});
    cases.addEnding(protocolError, {frame(Frame::close, "a")});
    cases.addEnding(normal, {bye});
    cases.addEnding(normal, {closing(normal, "Hello, world!")});
    cases.addEnding(normal, {closing(normal, std::string(123, '*'))});
    cases.addEnding(protocolError, {closing(normal, std::string(124, '*'))});

    cases.part("7.5"); // a reason that is not UTF-8
    cases.addEnding(notUtf8, {closing(normal, kosme + "\xED\xA0\x80"s + "edited")});

    cases.part("7.7"); // codes that a peer may send
    for (const unsigned code :
         {1000U, 1001U, 1002U, 1003U, 1007U, 1008U, 1009U, 1010U, 1011U, 3000U, 3999U, 4000U, 4999U}) {
        cases.addEnding(static_cast<std::uint16_t>(code), {closing(code)});
    }
    cases.part("7.9"); // and may not
    for (const unsigned code : {0U, 999U, 1004U, 1005U, 1006U, 1016U, 1100U, 2000U, 2999U}) {
        cases.addEnding(protocolError, {closing(code)});
    }
    cases.part("7.13"); // beyond all that have a meaning
    for (const unsigned code : {5000U, 65535U}) {
        cases.addEnding(protocolError, {closing(code)});
    }
}

void addManyFragments(Cases& cases) {
    cases.part("10.1");
    const std::string payload(65536, '*');
    cases.add(fragments(chopped(payload, 1300)), {payload});
}

} // namespace

std::vector<WebSocketCase> webSocketCases() {
    Cases cases;
    addFraming(cases);
    addPings(cases);
    addReservedBits(cases);
    addOpcodes(cases);
    addFragmentation(cases);
    addTextsInPieces(cases);
    addBoundaries(cases);
    addBrokenSequences(cases);
    addOverlong(cases);
    addSurrogatesAndSpecials(cases);
    addClosing(cases);
    addManyFragments(cases);
    return cases.take();
}

} // namespace tarnly::test
