#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"
#include "TarnlyXPlane/Link/XPlaneTransport.hpp"

namespace tarnly {

/// The requests over HTTP to the simulator's local web API, version 2: each on a connection of its own.
/// Remembers nothing. Belongs to the network thread; what it answers with must not outlive it.
class WebApiRest {
  public:
    static constexpr std::chrono::seconds catalogueTimeout{10};
    static constexpr std::chrono::seconds readTimeout{3};
    static constexpr std::chrono::seconds activationTimeout{60};

    /// Ends the process for a host that cannot stand in a URL. `workers` must outlive what runs on the
    /// network thread.
    WebApiRest(Endpoint endpoint, std::shared_ptr<XPlaneTransport> transport, WorkerPool& workers);

    const Endpoint& endpoint() const { return endpoint_; }

    /// "http://host:port/api/v2/"
    std::string baseUrl() const;

    /// The catalogue "datarefs" or "commands". Throws `LinkFailure`, which says what the failure shows of the
    /// simulator.
    Task<IdsByName> catalogue(std::string name);

    /// The simulator's version where it tells it. Never fails.
    Task<std::optional<std::string>> version();

    /// The answer to a small read, whatever its status. Throws `NetworkError`.
    Task<HttpResponse> datarefCount();
    Task<HttpResponse> datarefValue(std::int64_t id);

    /// POST of `body` to a path below the base URL; the response, whatever its status. What `onceConnected`
    /// throws is passed on.
    Task<HttpResponse> post(std::string path, std::string body, OnceConnected onceConnected);

  private:
    Task<HttpResponse> fetch(std::string method, std::string target, std::string body,
                             std::chrono::milliseconds timeout, OnceConnected onceConnected);
    Task<IdsByName> parsed(std::string url, HttpResponse response);

    // Constant after construction
    const Endpoint endpoint_;
    const std::shared_ptr<XPlaneTransport> transport_;
    WorkerPool& workers_;
};

} // namespace tarnly
