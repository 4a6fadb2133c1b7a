#pragma once

#include <chrono>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {

/// Performs one HTTP/1.1 exchange on a connection of its own and returns the response, whatever its status.
///
/// Throws `NetworkError`: `connectionFailed`, `timedOut` when the whole exchange takes longer than `timeout`,
/// `connectionClosed` when the server hangs up, `invalidResponse` when it answers something that is not HTTP.
/// The response may be up to 256 MiB long. `clock` must outlive the exchange.
Task<HttpResponse> fetchHttp(Clock& clock, Endpoint endpoint, HttpRequest request,
                             std::chrono::milliseconds timeout);

} // namespace tarnly
