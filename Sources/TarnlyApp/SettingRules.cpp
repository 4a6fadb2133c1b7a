#include "TarnlyApp/SettingRules.hpp"

#include <filesystem>

#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {
namespace {

constexpr std::int64_t lastPort = 65535;

} // namespace

std::string nameFault(const std::string& name) { return name.empty() ? "a name cannot be empty" : ""; }

std::string hostFault(const std::string& host) {
    return isHost(host) ? "" : "a host name or an address without brackets is wanted";
}

std::string simulatorPortFault(std::int64_t port) {
    return port >= 1 && port <= lastPort ? "" : "a number from 1 to 65535 is wanted";
}

std::string portFault(std::int64_t port) {
    return port >= 0 && port <= lastPort ? "" : "a number from 0 to 65535 is wanted";
}

std::string originFault(const std::string& origin) {
    return originFrom(origin) ? "" : "an origin such as https://example.com is wanted, without a path";
}

std::string pathFault(const std::string& path) {
    return std::filesystem::path(path).is_absolute()
               ? ""
               : "a path from the root on, such as /home/pilot, is wanted";
}

std::optional<WebOrigin> originFrom(std::string_view text) {
    return WebOrigin::parse(text.substr(0, text.size() - (text.ends_with('/') ? 1 : 0)));
}

} // namespace tarnly
