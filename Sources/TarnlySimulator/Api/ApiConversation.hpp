#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/Api/Subscriptions.hpp"
#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// One client's talk over its WebSocket, without the socket. Belongs to the thread of its world, which
/// outlives it.
class Session {
  public:
    explicit Session(World& world) : world_(world) {}

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

    World& world_;
    Subscriptions subscriptions_;
};

} // namespace tarnly::simulator
