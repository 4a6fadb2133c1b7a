#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// What one client has subscribed to, and what it has been told already.
class Subscriptions {
  public:
    /// Subscribing again makes the next update tell the value again.
    void add(std::int64_t datarefId) { told_[datarefId] = {}; }
    void remove(std::int64_t datarefId) { told_.erase(datarefId); }
    void removeAll() { told_.clear(); }

    /// The values subscribed so far will never be told again.
    void freeze();

    std::size_t size() const { return told_.size(); }

    /// The update message with the values that have changed since the last one; empty when none has.
    std::string update(const World& world);

  private:
    struct Told {
        /// The value as it was printed last; empty before the first time.
        std::string text;
        bool isFrozen = false;
    };

    std::map<std::int64_t, Told> told_;
};

/// One client's talk over its WebSocket, without the socket. Belongs to the thread of its world, which
/// outlives it.
class ApiConversation {
  public:
    explicit ApiConversation(World& world) : world_(world) {}

    /// The result messages that answer `request`; never fails, whatever the request is.
    std::vector<std::string> answer(std::string_view request);

    /// The message that is due now; empty when there is nothing to tell.
    std::string update();

  private:
    /// How each entry of a request fared; absent: well.
    using Outcomes = std::vector<std::optional<ApiError>>;

    Outcomes carryOut(const boost::json::object& request);
    Outcomes subscribe(const boost::json::object& parameters);
    Outcomes unsubscribe(const boost::json::object& parameters);
    Outcomes set(const boost::json::object& parameters);
    Outcomes activate(const boost::json::object& parameters);
    std::vector<std::string> results(std::optional<std::int64_t> requestId, const Outcomes& outcomes) const;

    OnOneThread thread_;
    World& world_;
    Subscriptions subscriptions_;
};

} // namespace tarnly::simulator
