#include "TarnlyXPlane/Link/WebApiRest.hpp"

#include <array>
#include <charconv>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyXPlane/Link/LinkFailure.hpp"

namespace tarnly {
namespace {

/// The first version with this web API.
constexpr std::array oldestThatServes{12, 1, 4};

/// Whether a version such as "12.1.3-r2" stands before another one, by its first three numbers.
bool isOlder(const std::string& version, const std::array<int, 3>& than) {
    std::array<int, 3> numbers{};
    const char* at = version.data();
    const char* const end = at + version.size();
    for (auto& number : numbers) {
        const auto [stop, error] = std::from_chars(at, end, number);
        if (error != std::errc() || stop == end || *stop != '.') break;
        at = stop + 1;
    }
    return numbers < than;
}

std::string apiTarget(const std::string& path) { return std::string(webApiPath) + "/" + path; }

NetworkError invalidCatalogue(const std::string& url, unsigned status, const char* reason) {
    const auto shownStatus =
        status == httpStatus::ok ? std::string() : "HTTP status " + std::to_string(status) + ": ";
    return {NetworkError::Case::invalidResponse, url + ": " + shownStatus + reason};
}

} // namespace

WebApiRest::WebApiRest(Endpoint endpoint, std::shared_ptr<XPlaneTransport> transport, WorkerPool& workers)
    : endpoint_(std::move(endpoint)), transport_(std::move(transport)), workers_(workers) {
    if (!isHost(endpoint_.host)) std::abort();
}

std::string WebApiRest::baseUrl() const { return "http://" + describe(endpoint_) + apiTarget(""); }

Task<IdsByName> WebApiRest::catalogue(std::string name) {
    const auto url = baseUrl() + name;
    std::optional<NetworkError> failure;
    unsigned status = httpStatus::ok;
    std::string body;
    try {
        auto response = co_await fetch("GET", apiTarget(name), "", catalogueTimeout, nullptr);
        status = response.status;
        if (status != httpStatus::ok) body = response.body;
        auto ids = co_await parsed(url, std::move(response));
        co_return ids;
    } catch (const NetworkError& error) {
        failure = error;
    }
    const bool isAnswer = failure->which() == NetworkError::Case::invalidResponse;
    if (isAnswer && status == httpStatus::forbidden) {
        throw refusal(url + ": HTTP status 403", errorMessageOf(body));
    }
    if (isAnswer && status == httpStatus::notFound) {
        const auto found = co_await version();
        if (found && !isOlder(*found, oldestThatServes)) throw failureOfConnecting(*failure);
        const NetworkError error(NetworkError::Case::connectionFailed, url + ": HTTP status 404");
        throw tooOld(error, found.value_or(""));
    }
    throw failureOfConnecting(*failure);
}

Task<IdsByName> WebApiRest::parsed(std::string url, HttpResponse response) {
    const auto size = response.body.size();
    auto parse = [body = std::move(response.body)]() mutable { return parseCatalogue(std::move(body)); };
    try {
        auto ids = co_await workers_.runSized(size, std::move(parse));
        co_return ids;
    } catch (const JsonError& error) {
        throw invalidCatalogue(url, response.status, error.what());
    }
}

Task<std::optional<std::string>> WebApiRest::version() {
    try {
        const auto response = co_await fetch("GET", "/api/capabilities", "", readTimeout, nullptr);
        co_return simulatorVersionIn(response.body);
    } catch (const NetworkError&) {
        co_return std::nullopt;
    }
}

Task<HttpResponse> WebApiRest::datarefCount() {
    return fetch("GET", apiTarget("datarefs/count"), "", readTimeout, nullptr);
}

Task<HttpResponse> WebApiRest::datarefValue(std::int64_t id) {
    return fetch("GET", apiTarget("datarefs/" + std::to_string(id) + "/value"), "", readTimeout, nullptr);
}

Task<HttpResponse> WebApiRest::post(std::string path, std::string body, OnceConnected onceConnected) {
    return fetch("POST", apiTarget(path), std::move(body), activationTimeout, std::move(onceConnected));
}

Task<HttpResponse> WebApiRest::fetch(std::string method, std::string target, std::string body,
                                     std::chrono::milliseconds timeout, OnceConnected onceConnected) {
    HttpRequest request;
    request.method = std::move(method);
    request.target = std::move(target);
    request.headers.emplace_back("Accept", "application/json");
    request.headers.emplace_back("Content-Type", "application/json");
    request.body = std::move(body);
    return transport_->fetch(endpoint_, std::move(request), timeout, std::move(onceConnected));
}

} // namespace tarnly
