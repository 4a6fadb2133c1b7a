#include "Client.hpp"

#include <stdexcept>

namespace tarnly::load {
namespace {

/// Any 16 bytes will do. What the server makes of them is a matter of tests; here only the status counts.
constexpr std::string_view handshake =
    "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
    "Sec-WebSocket-Key: dGFybmx5LWxvYWQtMDAwMA==\r\nSec-WebSocket-Version: 13\r\n\r\n";

} // namespace

Client::Client(std::uint16_t port) : socket_(connectTo(port)) {
    shakeHands();
    const auto reply = request(R"({"type":"pair","req_id":1})", 1);
    if (reply.find(R"("accepted":true)") == std::string::npos)
        throw std::runtime_error("not paired: " + reply);
}

void Client::shakeHands() {
    sendAll(socket_, handshake);
    std::string head;
    for (char byte = 0; !head.ends_with("\r\n\r\n"); head += byte) // byte by byte: what follows is frames
        if (receive(socket_, {&byte, 1}) != 1) throw std::runtime_error("the server hung up: " + head);
    if (!head.starts_with("HTTP/1.1 101 ")) throw std::runtime_error("no upgrade: " + head);
}

void Client::receiveMore() {
    const auto count = receive(socket_, room_);
    if (count <= 0) throw std::runtime_error("the server hung up");
    reader_.append({room_.data(), static_cast<std::size_t>(count)});
}

void Client::sendText(std::string_view text) { sendAll(socket_, encodeFrame(Opcode::text, text)); }

std::string Client::receiveText() {
    std::string text;
    for (;;) {
        const auto frame = reader_.next();
        if (!frame) {
            receiveMore();
        } else if (frame->opcode == Opcode::text || frame->opcode == Opcode::continuation) {
            text += frame->payload;
            if (frame->isFinal) return text;
        } else if (frame->opcode == Opcode::close) {
            throw std::runtime_error("the server closed the connection");
        }
    }
}

std::string Client::request(std::string_view text, int requestId) {
    sendText(text);
    const auto mark = R"("req_id":)" + std::to_string(requestId) + ',';
    for (;;) {
        auto reply = receiveText();
        if (reply.substr(0, 100).find(mark) != std::string::npos) return reply;
    }
}

std::string simInfoRequest(int requestId, std::size_t size) {
    const auto begin = R"({"type":"sim_info","req_id":)" + std::to_string(requestId);
    const std::string key = R"(,"pad":")", end = R"("})";
    const auto plain = begin.size() + key.size() + end.size();
    if (size <= plain) return begin + '}';
    return begin + key + std::string(size - plain, 'x') + end;
}

std::string simInfoReplyBegin(int requestId) {
    return R"({"type":"sim_info","req_id":)" + std::to_string(requestId) + R"(,"data":{"sim":"xplane",)";
}

std::string subscriptionRequest(int requestId, std::span<const std::string> names) {
    std::string text = R"({"type":"dataref_subscribe_values","req_id":)" + std::to_string(requestId) +
                       R"(,"params":{"datarefs":[)";
    for (const auto& name : names)
        text += (&name == names.data() ? R"({"name":")" : R"(,{"name":")") + name + R"("})";
    return text + "]}}";
}

} // namespace tarnly::load
