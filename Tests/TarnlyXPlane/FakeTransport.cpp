#include "TarnlyXPlane/FakeTransport.hpp"

#include <algorithm>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly::test {

Task<std::optional<WebSocketConnection::Message>> FakeWebSocket::receive() {
    while (incoming_.empty() && isOpen_) {
        co_await changed_.wait();
    }
    std::optional<Message> message;
    if (isOpen_) {
        message = std::move(incoming_.front());
        incoming_.pop_front();
    }
    co_return message;
}

Task<> FakeWebSocket::opened() {
    while (isOpening_ && isOpen_) {
        co_await changed_.wait();
    }
    if (failure_) throw *failure_;
    if (!isOpen_) throw NetworkError(NetworkError::Case::connectionClosed, "closed");
}

void FakeWebSocket::ping() {
    ++pings;
    if (answersPings) deliverPong();
}

void FakeWebSocket::deliverPong() {
    ++signs_.pongs;
    signs_.lastPongAt = clock_.now();
    deliverByte();
}

void FakeWebSocket::open() {
    isOpening_ = false;
    changed_.notifyAll();
}

void FakeWebSocket::refuse(const std::string& reason, NetworkError::Case which) {
    failure_.emplace(which, reason);
    cancel();
}

void FakeWebSocket::send(std::string text, Kind kind) {
    if (!isOpen_) return;
    sent.push_back(parseJson(text));
    kinds.push_back(kind);
}

Task<> FakeWebSocket::drained() {
    if (!isOpen_) throw NetworkError(NetworkError::Case::sendFailed, "closed");
    co_return;
}

void FakeWebSocket::cancel() {
    isOpen_ = false;
    changed_.notifyAll();
}

void FakeWebSocket::deliver(std::string text, Opcode opcode) {
    deliverByte();
    incoming_.push_back({opcode, std::move(text)});
    changed_.notifyAll();
}

void FakeWebSocket::deliverValues(const std::map<std::int64_t, std::string>& values) {
    std::string data;
    for (const auto& [id, value] : values)
        data += (data.empty() ? "\"" : ",\"") + std::to_string(id) + "\":" + value;
    deliver(R"({"type":"dataref_update_values","data":{)" + data + "}}");
}

Task<HttpResponse> FakeTransport::fetch(Endpoint endpoint, HttpRequest request,
                                        std::chrono::milliseconds timeout, OnceConnected onceConnected) {
    if (onceConnected) {
        co_await onceConnected();
    }
    exchanges.push_back({endpoint, request, timeout});
    const auto wait = std::min(latency, timeout);
    if (wait.count() > 0) {
        co_await clock_.sleepFor(wait);
    }
    if (latency > timeout) throw NetworkError(NetworkError::Case::timedOut, describe(endpoint));
    if (answer) {
        auto response = answer(request);
        if (response) co_return *response;
    }
    if (request.target == "/api/v2/datarefs") co_return httpResponse(200, catalogueBody(datarefs));
    if (request.target == "/api/v2/commands") co_return httpResponse(200, catalogueBody(commands));
    co_return httpResponse(404, "<html></html>");
}

std::shared_ptr<WebSocketConnection> FakeTransport::openWebSocket(Endpoint endpoint, std::string target) {
    openedWebSockets.emplace_back(endpoint, target);
    webSocket = std::make_shared<FakeWebSocket>(executor_, clock_);
    if (onWebSocket && !onWebSocket(*webSocket)) webSocket->holdOpening();
    return webSocket;
}

Task<> FakeTransport::sendDatagram(Endpoint endpoint, std::vector<std::byte> bytes) {
    if (onDatagram) onDatagram();
    datagrams.push_back({endpoint, bytes});
    co_return;
}

std::vector<std::string> FakeTransport::exchangeLines() const {
    std::vector<std::string> lines;
    for (const auto& exchange : exchanges)
        lines.push_back(exchange.request.method + " " + exchange.request.target);
    return lines;
}

std::string catalogueBody(const std::map<std::string, std::int64_t>& ids) {
    JsonWriter writer;
    writer.beginObject();
    writer.key("data");
    writer.beginArray();
    for (const auto& [name, id] : ids) {
        writer.beginObject();
        writer.key("id");
        writer.integer(id);
        writer.key("is_writable");
        writer.boolean(true);
        writer.key("name");
        writer.string(name);
        writer.endObject();
    }
    writer.endArray();
    writer.endObject();
    return writer.take();
}

HttpResponse httpResponse(unsigned status, std::string body) {
    HttpResponse response;
    response.status = status;
    response.contentType = "application/json";
    response.body = std::move(body);
    return response;
}

} // namespace tarnly::test
