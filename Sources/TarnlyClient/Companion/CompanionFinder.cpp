#include "TarnlyClient/Companion/CompanionFinder.hpp"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "TarnlyClient/Companion/ClientError.hpp"
#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly::client {
namespace {

constexpr auto serviceType = "_tarnly._tcp";
constexpr auto addressAdvice = "where it is can be told with --host HOST --port PORT";

auto findNamed(const std::vector<FoundService>& found, const std::string& instance) {
    return std::find_if(found.begin(), found.end(), [&](const FoundService& service) {
        return canonicallyEqual(service.name, instance);
    });
}

Endpoint endpoint(const FoundService& service) { return {service.address, service.port}; }

CompanionPlace place(const FoundService& service) { return {service.name, endpoint(service)}; }

std::string list(const std::vector<FoundService>& found) {
    std::string text;
    for (const auto& service : found) {
        text += "\n  " + printable(service.name) + "  " + describe(endpoint(service));
    }
    return text;
}

} // namespace

std::vector<FoundService> findCompanions(std::chrono::milliseconds patience,
                                         const std::optional<std::string>& instance) {
    std::function<bool(const std::vector<FoundService>&)> enough;
    if (instance) enough = [&](const auto& found) { return findNamed(found, *instance) != found.end(); };
    try {
        return browseServices(serviceType, patience, enough);
    } catch (const std::runtime_error& error) {
        throw ClientError("cannot look for a companion: " + std::string(error.what()) + "; " + addressAdvice);
    }
}

CompanionPlace chooseCompanion(const std::vector<FoundService>& found,
                               const std::optional<std::string>& instance) {
    if (found.empty()) {
        throw ClientError("no companion found: is it running on this network? Otherwise " +
                          std::string(addressAdvice));
    }
    if (instance) {
        const auto named = findNamed(found, *instance);
        if (named != found.end()) return place(*named);
        throw ClientError("no companion is named \"" + printable(*instance) +
                          "\"; these are there:" + list(found));
    }
    if (found.size() > 1) {
        throw ClientError("several companions are there; choose one with --instance NAME:" + list(found));
    }
    return place(found.front());
}

CompanionPlace locateCompanion(const CompanionSearch& search) {
    if (search.host) return {std::nullopt, {*search.host, search.port}};
    return chooseCompanion(findCompanions(search.patience, search.instance), search.instance);
}

std::function<Endpoint()> locatorOf(CompanionSearch search, const std::optional<std::string>& name) {
    if (!name) return {};
    search.instance = name;
    search.patience = std::min(search.patience, std::chrono::milliseconds(2'000));
    return [search = std::move(search)] { return locateCompanion(search).endpoint; };
}

} // namespace tarnly::client
