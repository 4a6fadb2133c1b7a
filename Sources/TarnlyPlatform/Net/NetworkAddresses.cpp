#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <tuple>

#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {
namespace {

enum class Reach { nobody, link, network };

struct Candidate {
    const InterfaceAddress* source;
    Reach reach;
    bool isIPv6;
    std::size_t interfaceRank;
};

Reach reachOfIPv4(std::uint32_t address) {
    const auto first = address >> 24;
    if (first == 0 || first == 127 || first >= 224) return Reach::nobody; // this network, loopback, multicast
    return address >> 16 == 0xA9FE ? Reach::link : Reach::network;
}

Reach reachOfIPv6(const in6_addr& address) {
    const auto first = address.s6_addr[0];
    const bool isGlobal = (first & 0xE0) == 0x20;
    const bool isUniqueLocal = (first & 0xFE) == 0xFC;
    return isGlobal || isUniqueLocal ? Reach::network : Reach::nobody;
}

/// The interface's place among all, in the order in which they are first named.
std::size_t rankOf(const InterfaceAddress& address, const std::vector<InterfaceAddress>& all) {
    const auto first = std::ranges::find(all, address.interface, &InterfaceAddress::interface);
    return static_cast<std::size_t>(first - all.begin());
}

Candidate candidate(const InterfaceAddress& address, const std::vector<InterfaceAddress>& all) {
    Candidate result{&address, Reach::nobody, false, rankOf(address, all)};
    in_addr ipv4{};
    in6_addr ipv6{};
    if (!address.isRunning || address.isLoopback) return result;
    if (inet_pton(AF_INET, address.address.c_str(), &ipv4) == 1) {
        result.reach = reachOfIPv4(ntohl(ipv4.s_addr));
    } else if (inet_pton(AF_INET6, address.address.c_str(), &ipv6) == 1) {
        result.isIPv6 = true;
        result.reach = reachOfIPv6(ipv6);
    }
    return result;
}

std::vector<std::string> textsOf(const std::vector<Candidate>& candidates, Reach reach) {
    std::vector<std::string> texts;
    for (const auto& each : candidates) {
        const auto& text = each.source->address;
        if (each.reach == reach && std::ranges::find(texts, text) == texts.end()) texts.push_back(text);
    }
    return texts;
}

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

std::vector<std::string> reachableAddresses(const std::vector<InterfaceAddress>& addresses) {
    std::vector<Candidate> candidates;
    for (const auto& address : addresses)
        candidates.push_back(candidate(address, addresses));
    std::ranges::stable_sort(candidates, {}, [](const Candidate& each) {
        return std::tuple(!each.source->isPhysical, each.interfaceRank, each.isIPv6);
    });
    const auto ofNetwork = textsOf(candidates, Reach::network);
    return ofNetwork.empty() ? textsOf(candidates, Reach::link) : ofNetwork;
}

std::vector<std::string> networkAddresses() {
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> list(first, &freeifaddrs);
    std::vector<InterfaceAddress> addresses;
    for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
        if (const auto text = textOf(entry->ifa_addr)) addresses.push_back(interfaceAddress(*entry, *text));
    }
    return reachableAddresses(addresses);
}

std::string webSocketUrl(const std::string& address, std::uint16_t port) {
    return "ws://" + describe({address, port});
}

} // namespace tarnly
