#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/TaskGroup.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyPlatform/Net/WebSocketConnection.hpp"
#include "TarnlyXPlane/Link/ValueCache.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly {

/// One piece of work under way whose outcome any number of coroutines wait for. Belongs to the network
/// thread; who waits keeps it alive.
class SharedAttempt {
  public:
    explicit SharedAttempt(const boost::asio::any_io_executor& executor);

    /// Ends all waits, which throw `failure` unless it is null.
    void finish(std::exception_ptr failure);

    Task<> wait();

  private:
    OnOneThread thread_;
    Event finishedEvent_;
    bool finished_ = false;
    std::exception_ptr failure_;
};

/// The connection to the simulator's local web API, version 2: HTTP for the catalogues and the commands, one
/// WebSocket for subscriptions, values and writes.
///
/// There is one connection in a link's life. When the simulator goes, requests fail from then on and the last
/// values stay. Belongs to the network thread; held by its backend and by its own receive loop, which `close`
/// ends. Who awaits an operation keeps the link alive meanwhile.
class WebApiLink : public std::enable_shared_from_this<WebApiLink> {
  public:
    /// Ends the process for a host that cannot stand in a URL. `workers` must outlive what runs on the
    /// network thread.
    WebApiLink(boost::asio::any_io_executor executor, Endpoint endpoint,
               std::shared_ptr<XPlaneTransport> transport, WorkerPool& workers);

    WebApiLink(const WebApiLink&) = delete;
    WebApiLink& operator=(const WebApiLink&) = delete;

    /// "http://host:port/api/v2/"
    std::string baseUrl() const;
    /// "ws://host:port/api/v2"
    std::string webSocketUrl() const;

    /// Loads the catalogues and opens the WebSocket unless that is done; does not wait for the handshake.
    /// Calls that overlap share one attempt and its failure; the next call after a failure tries again.
    Task<> ensureConnected();

    /// Tells the WebSocket and the receive loop to end, for good.
    void close();

    /// Waits until they have ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock& clock, Clock::Duration limit) { return tasks_.join(clock, limit); }

    /// Sends one request under the next number. Does nothing before the first connection. Throws `JsonError`
    /// for a value that is not finite, `NetworkError` when the WebSocket has ended.
    Task<> send(std::string_view type, std::vector<DatarefEntry> datarefs);

    /// POST of `body` to a path below the base URL; the response, whatever its status.
    Task<HttpResponse> post(std::string path, std::string body);

    /// Takes in the values of a message from the simulator; anything else is dropped. Never fails.
    Task<> handleMessage(std::string text);

    const IdsByName& datarefIds() const { return datarefIds_; }
    const IdsByName& commandIds() const { return commandIds_; }
    const ValueCache& values() const { return values_; }

  private:
    std::shared_ptr<SharedAttempt> startAttempt();
    void finishAttempt(const std::exception_ptr& failure);
    static Task<> connect(std::shared_ptr<WebApiLink> link);
    static Task<> receiveLoop(std::shared_ptr<WebApiLink> link,
                              std::shared_ptr<WebSocketConnection> webSocket);

    void throwIfClosed() const;
    Task<IdsByName> fetchCatalogue(std::string path);
    Task<HttpResponse> fetch(std::string method, std::string path, std::string body);

    // Constant after construction
    const boost::asio::any_io_executor executor_;
    const Endpoint endpoint_;
    const std::shared_ptr<XPlaneTransport> transport_;
    WorkerPool& workers_;

    OnOneThread thread_;
    TaskGroup connecting_;
    TaskGroup tasks_;
    ValueCache values_;

    IdsByName datarefIds_;
    IdsByName commandIds_;
    std::shared_ptr<SharedAttempt> attempt_;
    std::shared_ptr<WebSocketConnection> webSocket_;
    bool connected_ = false;
    bool closed_ = false;
    std::int64_t nextReqId_ = 0;
};

} // namespace tarnly
