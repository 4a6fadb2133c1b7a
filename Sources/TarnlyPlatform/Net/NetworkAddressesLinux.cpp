#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

namespace tarnly {
namespace {

std::optional<std::string> textOf(const sockaddr* address) {
    if (address == nullptr) return std::nullopt;
    std::array<char, INET6_ADDRSTRLEN> text{};
    const void* bytes = nullptr;
    if (address->sa_family == AF_INET) bytes = &reinterpret_cast<const sockaddr_in*>(address)->sin_addr;
    if (address->sa_family == AF_INET6) bytes = &reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
    if (bytes == nullptr || inet_ntop(address->sa_family, bytes, text.data(), text.size()) == nullptr) {
        return std::nullopt;
    }
    return text.data();
}

InterfaceAddress interfaceAddress(const ifaddrs& entry, const std::string& address) {
    const std::string label = entry.ifa_name;
    const auto interface = label.substr(0, label.find(':')); // an IPv4 address may have a label, "eth0:1"
    const auto device = std::filesystem::path("/sys/class/net") / interface / "device";
    std::error_code ignored;
    return {.interface = interface,
            .address = address,
            .isRunning = (entry.ifa_flags & IFF_UP) != 0 && (entry.ifa_flags & IFF_RUNNING) != 0,
            .isLoopback = (entry.ifa_flags & IFF_LOOPBACK) != 0,
            .isPhysical = std::filesystem::exists(device, ignored)};
}

} // namespace

std::vector<InterfaceAddress> interfaceAddresses() {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, &freeifaddrs);
    std::vector<InterfaceAddress> addresses;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (const auto text = textOf(entry->ifa_addr)) addresses.push_back(interfaceAddress(*entry, *text));
    }
    return addresses;
}

} // namespace tarnly
