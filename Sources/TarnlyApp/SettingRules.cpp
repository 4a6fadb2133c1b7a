#include "TarnlyApp/SettingRules.hpp"

#include <filesystem>

#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {
namespace {

constexpr std::int64_t lastPort = 65535;

} // namespace

Phrase nameFault(const std::string& name) {
    return name.empty() ? Phrase::of("a name cannot be empty") : Phrase();
}

Phrase hostFault(const std::string& host) {
    return isHost(host) ? Phrase() : Phrase::of("a host name or an address without brackets is wanted");
}

Phrase simulatorPortFault(std::int64_t port) {
    return port >= 1 && port <= lastPort ? Phrase() : Phrase::of("a number from 1 to 65535 is wanted");
}

Phrase portFault(std::int64_t port) {
    return port >= 0 && port <= lastPort ? Phrase() : Phrase::of("a number from 0 to 65535 is wanted");
}

Phrase originFault(const std::string& origin) {
    return originFrom(origin) ? Phrase()
                              : Phrase::of("an origin such as https://example.com is wanted, without a path");
}

Phrase pathFault(const std::string& path) {
    return std::filesystem::path(path).is_absolute()
               ? Phrase()
               : Phrase::of("a path from the root on, such as /home/pilot, is wanted");
}

std::optional<WebOrigin> originFrom(std::string_view text) {
    return WebOrigin::parse(text.substr(0, text.size() - (text.ends_with('/') ? 1 : 0)));
}

} // namespace tarnly
