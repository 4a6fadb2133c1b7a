#pragma once

#include <chrono>
#include <functional>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {

/// What is to be made sure of before a request is sent; refuses by throwing.
using OnceConnected = std::function<Task<>()>;

/// Performs one HTTP/1.1 exchange on a connection of its own and returns the response, whatever its status.
///
/// Throws `NetworkError`: `connectionFailed`, `timedOut` when the whole exchange takes longer than `timeout`,
/// `connectionClosed` when the server hangs up, `invalidResponse` when it answers something that is not HTTP.
/// The response may be up to 256 MiB long. `clock` must outlive the exchange. `onceConnected`, where there is
/// one, is awaited when the connection stands and no byte has been sent; what it throws is thrown, and
/// nothing is sent. It sees to its own limit: when it takes longer than `timeout`, nothing is sent either,
/// but that is noticed only afterwards.
Task<HttpResponse> fetchHttp(Clock& clock, Endpoint endpoint, HttpRequest request,
                             std::chrono::milliseconds timeout, OnceConnected onceConnected = nullptr);

} // namespace tarnly
