#pragma once

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Guarded.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Net/WebSocketListener.hpp"

namespace tarnly::test {

/// A companion on a loopback port that says what a test tells it to, on a thread of its own.
class ScriptedCompanion {
  public:
    /// The texts to send when a request arrives; an absent list ends the connection.
    using Script = std::function<std::optional<std::vector<std::string>>(const boost::json::object& request)>;

    explicit ScriptedCompanion(Script script)
        : script_(std::move(script)),
          listener_(io_.get_executor(), clock_, options(),
                    [this](std::shared_ptr<WebSocketConnection> connection) {
                        boost::asio::co_spawn(io_, serve(this, std::move(connection)), boost::asio::detached);
                    }),
          thread_([this] { io_.run(); }) {}

    ScriptedCompanion(const ScriptedCompanion&) = delete;
    ScriptedCompanion& operator=(const ScriptedCompanion&) = delete;

    ~ScriptedCompanion() {
        io_.stop();
        thread_.join();
    }

    std::uint16_t port() const { return listener_.port(); }

    /// All that has arrived, in order.
    std::vector<std::string> received() const { return received_.copy(); }

    /// The reply to `request` with `data`, a JSON text.
    static std::string reply(const boost::json::object& request, const std::string& data) {
        return message(std::string(request.at("type").as_string()), request.at("req_id").as_int64(), data);
    }

    static std::string error(const boost::json::object& request, const std::string& text) {
        return message("error", request.at("req_id").as_int64(), "{\"message\":\"" + text + "\"}");
    }

    static std::string push(const std::string& data) {
        return "{\"type\":\"dataref_subscribe_values\",\"data\":" + data + "}";
    }

  private:
    static WebSocketListener::Options options() {
        WebSocketListener::Options result;
        result.reach = Reach::loopbackIPv4;
        return result;
    }

    static std::string message(const std::string& type, std::int64_t id, const std::string& data) {
        return "{\"type\":\"" + type + "\",\"req_id\":" + std::to_string(id) + ",\"data\":" + data + "}";
    }

    static Task<> serve(ScriptedCompanion* self, std::shared_ptr<WebSocketConnection> connection) {
        for (;;) {
            auto incoming = co_await connection->receive();
            if (!incoming) co_return;
            self->received_.with([&](auto& received) { received.push_back(incoming->content); });
            const auto request = parseJson(incoming->content);
            const auto answers = self->script_(request.as_object());
            if (!answers) {
                connection->cancel();
                co_return;
            }
            for (const auto& text : *answers)
                connection->send(text, WebSocketConnection::Kind::awaited);
        }
    }

    Script script_;
    Guarded<std::vector<std::string>> received_;
    SystemClock clock_;
    boost::asio::io_context io_;
    WebSocketListener listener_; // depends-on: clock_, io_
    std::thread thread_;         // depends-on: all
};

/// `script`, with pairing accepted before it.
inline ScriptedCompanion::Script paired(ScriptedCompanion::Script script) {
    return [script = std::move(script)](
               const boost::json::object& request) -> std::optional<std::vector<std::string>> {
        if (request.at("type") != "pair") return script(request);
        return std::vector{ScriptedCompanion::reply(request, R"({"accepted":true,"session_token":"t"})")};
    };
}

} // namespace tarnly::test
