#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
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
#include "TarnlyXPlane/Link/Catalogue.hpp"
#include "TarnlyXPlane/Link/Liveness.hpp"
#include "TarnlyXPlane/Link/SharedAttempt.hpp"
#include "TarnlyXPlane/Link/Subscriptions.hpp"
#include "TarnlyXPlane/Link/ValueCache.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"
#include "TarnlyXPlane/Link/WebApiRest.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly {

/// The connection to the simulator's local web API, version 2: HTTP for the catalogues and the commands, one
/// WebSocket for subscriptions, values and writes.
///
/// There is one connection in a link's life, and ids and values die with it. When the simulator goes,
/// requests fail from then on and the last values stay. Belongs to the network thread; held by its backend
/// and by its own tasks, which `close` ends. Who awaits an operation keeps the link alive meanwhile.
class WebApiLink : public std::enable_shared_from_this<WebApiLink> {
  public:
    /// While the simulator is at its main menu, its catalogue is asked for that often.
    static constexpr std::chrono::seconds menuPollInterval{2};

    /// Ends the process for a host that cannot stand in a URL. `workers` and `clock` must outlive what runs
    /// on the network thread.
    WebApiLink(boost::asio::any_io_executor executor, Endpoint endpoint,
               std::shared_ptr<XPlaneTransport> transport, Clock& clock, WorkerPool& workers);

    WebApiLink(const WebApiLink&) = delete;
    WebApiLink& operator=(const WebApiLink&) = delete;

    /// "http://host:port/api/v2/"
    std::string baseUrl() const { return rest_.baseUrl(); }
    /// "ws://host:port/api/v2"
    std::string webSocketUrl() const;

    /// Loads the catalogues and opens the WebSocket unless that is done. Calls that overlap share one attempt
    /// and its failure; the next call after a failure tries again. Throws `LinkFailure`.
    Task<> ensureConnected();

    /// From now on the link asks the simulator when it has been quiet for long, ends when it lives no more or
    /// has left its flight, and waits at the main menu for a flight. `onChange` is called when `isSilent` or
    /// `isAtMainMenu` may have changed. To be called once, on a connected link.
    void watch(std::function<void()> onChange);

    /// Tells the WebSocket and the link's tasks to end, for good.
    void close();

    /// Waits until they have ended, for `limit` at most; says whether it came to that.
    Task<bool> join(Clock& clock, Clock::Duration limit) { return tasks_.join(clock, limit); }

    /// Returns when nothing can come over the link any more.
    Task<> ended();
    bool hasEnded() const { return hasEnded_; }
    bool isConnected() const { return connected_; }

    /// The simulator says nothing, though it has been asked.
    bool isSilent();
    bool isAtMainMenu() const { return connected_ && datarefs_.isEmpty(); }
    /// When the other end last showed that it lives.
    Clock::TimePoint lastSign() const { return liveness_.lastSign(); }

    /// Sends one request under the next number. Does nothing before the first connection. Throws `JsonError`
    /// for a value that is not finite, `LinkEnded` when the WebSocket has ended.
    Task<> send(std::string_view type, std::vector<DatarefEntry> datarefs);

    /// Asks for the values of those datarefs that have not been asked for. Throws `LinkEnded`.
    Task<> subscribe(std::vector<std::int64_t> ids);

    /// POST to a path below the base URL; the response, whatever its status. Nothing is sent unless the link
    /// is found to live once that connection stands: who accepted it is the simulator that the ids in the
    /// path are from. Throws `LinkEnded` when it has ended by then.
    Task<HttpResponse> post(std::string path, std::string body);

    /// Takes in a message from the simulator; what is neither values nor a result is dropped. Never fails.
    Task<> handleMessage(std::string text);

    /// Loads the catalogue again where it may know more names by now. Calls that overlap share one load.
    Task<> refresh(Catalogue& catalogue);

    /// The same, without waiting for it.
    void refreshAside(Catalogue& catalogue);

    Catalogue& datarefs() { return datarefs_; }
    Catalogue& commands() { return commands_; }
    const IdsByName& datarefIds() const { return datarefs_.ids(); }
    const IdsByName& commandIds() const { return commands_.ids(); }
    const ValueCache& values() const { return values_; }

    /// Waits until values may have come, or the link has ended, or until `deadline`.
    static Task<> moreValues(std::shared_ptr<WebApiLink> link, Clock::TimePoint deadline);

    Task<std::optional<std::string>> version() { return rest_.version(); }

    // What samples stand on

    /// The datarefs of the position, whose values prove a sample: others may go on when these have stopped.
    void setPositionIds(std::vector<std::int64_t> ids);

    /// When no values have come for a moment, has the simulator asked whether it lives and whether those of
    /// the position hold: values have been seen to stop without a word. The outcome shows in `isProven`.
    void proveStandstill();

    bool isProven(Clock::TimePoint moment) const { return liveness_.isProven(moment); }

  private:
    std::shared_ptr<SharedAttempt> startAttempt();
    void finishAttempt(const std::exception_ptr& failure);
    static Task<> connect(std::shared_ptr<WebApiLink> link);
    static Task<> openWebSocket(std::shared_ptr<WebApiLink> link);
    static Task<> receiveLoop(std::shared_ptr<WebApiLink> link,
                              std::shared_ptr<WebSocketConnection> webSocket);
    static Task<> load(std::shared_ptr<WebApiLink> link, Catalogue& catalogue);
    static Task<> confirm(std::shared_ptr<WebApiLink> link);
    static Task<> doubtCatalogues(std::shared_ptr<WebApiLink> link);

    static Task<> keepWatch(std::shared_ptr<WebApiLink> link);
    static Task<> ask(std::shared_ptr<WebApiLink> link);
    static Task<> lookForFlight(std::shared_ptr<WebApiLink> link);
    static Task<> compareStandstill(std::shared_ptr<WebApiLink> link);
    static Task<bool> holds(std::shared_ptr<WebApiLink> link, std::int64_t id);

    void look();
    void noteSigns();
    Clock::TimePoint nextMenuPoll() const;
    void noteCount(const HttpResponse& response);
    void tellChange();
    void end();
    void throwIfClosed() const;
    void throwIfEnded() const;
    static Task<> subscribeSingly(std::shared_ptr<WebApiLink> link, std::vector<std::int64_t> ids);
    void queue(std::int64_t reqId, std::string_view type, std::vector<DatarefEntry> datarefs);
    /// Whether there was anything to ask for.
    bool queueSubscription(const std::vector<std::int64_t>& ids);
    Task<> drained();
    static Task<> refreshHolding(std::shared_ptr<WebApiLink> link, Catalogue& catalogue);
    TaskGroup::OnFailure closeOnFailure();

    // Constant after construction
    const boost::asio::any_io_executor executor_;
    const std::shared_ptr<XPlaneTransport> transport_;
    WebApiRest rest_;
    Clock& clock_;
    WorkerPool& workers_;

    OnOneThread thread_;
    TaskGroup connecting_;
    TaskGroup tasks_;
    Event endedEvent_;
    Event valuesEvent_;

    Catalogue datarefs_;
    Catalogue commands_;
    Subscriptions subscriptions_;
    ValueCache values_;
    Liveness liveness_;
    std::vector<std::int64_t> positionIds_;

    std::shared_ptr<SharedAttempt> attempt_;
    std::shared_ptr<WebSocketConnection> webSocket_;
    std::function<void()> onChange_;
    bool connected_ = false;
    bool closed_ = false;
    bool hasEnded_ = false;
    bool wasSilent_ = false;
    bool isComparing_ = false;
    bool isDoubting_ = false;
    bool isLookingForFlight_ = false;
    Clock::TimePoint menuPolledAt_{};
    Clock::TimePoint lastMessageAt_{};
    Clock::TimePoint askedAt_{};
    int mismatches_ = 0;
    std::int64_t nextReqId_ = 0;
};

} // namespace tarnly
