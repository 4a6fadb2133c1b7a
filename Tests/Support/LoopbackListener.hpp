#pragma once

#include <boost/asio/io_context.hpp>
#include <deque>
#include <memory>
#include <utility>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Net/WebSocketListener.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly::test {

/// A listener on a loopback port of its own, and a client for it.
class LoopbackListener {
  public:
    LoopbackListener(boost::asio::io_context& io, Clock& clock, const WebSocketLimits& limits = {})
        : io_(io),
          clock_(clock),
          accepted_(io.get_executor()),
          listener_(io.get_executor(), clock_, options(limits),
                    [this](std::shared_ptr<WebSocketConnection> connection) {
                        connections_.push_back(std::move(connection));
                        accepted_.notifyAll();
                    }) {}

    WebSocketListener& listener() { return listener_; }
    Endpoint endpoint() const { return {"127.0.0.1", listener_.port()}; }

    std::shared_ptr<WebSocketConnection> openClient() {
        return openWebSocket(io_.get_executor(), clock_, endpoint(), "/");
    }

    /// The listener's side of the next connection.
    Task<std::shared_ptr<WebSocketConnection>> accept() {
        while (connections_.empty()) {
            co_await accepted_.wait();
        }
        auto connection = std::move(connections_.front());
        connections_.pop_front();
        co_return connection;
    }

  private:
    static WebSocketListener::Options options(const WebSocketLimits& limits) {
        WebSocketListener::Options result;
        result.limits = limits;
        result.reach = Reach::loopbackIPv4;
        return result;
    }

    boost::asio::io_context& io_;
    Clock& clock_;
    std::deque<std::shared_ptr<WebSocketConnection>> connections_;
    Event accepted_;
    WebSocketListener listener_;
};

} // namespace tarnly::test
