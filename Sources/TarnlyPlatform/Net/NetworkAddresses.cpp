#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/host_name.hpp>
#include <tuple>

#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly {
namespace {

using boost::asio::ip::address_v4;
using boost::asio::ip::address_v6;

enum class AddressReach { nobody, link, network };

struct Candidate {
    const InterfaceAddress* source;
    AddressReach reach;
    bool isIPv6;
    std::size_t interfaceRank;
};

AddressReach reachOfIPv4(address_v4::uint_type address) {
    const auto first = address >> 24;
    if (first == 0 || first == 127 || first >= 224)
        return AddressReach::nobody; // this network, loopback, multicast
    return address >> 16 == 0xA9FE ? AddressReach::link : AddressReach::network;
}

AddressReach reachOfIPv6(const address_v6::bytes_type& address) {
    const auto first = address[0];
    const bool isGlobal = (first & 0xE0) == 0x20;
    const bool isUniqueLocal = (first & 0xFE) == 0xFC;
    return isGlobal || isUniqueLocal ? AddressReach::network : AddressReach::nobody;
}

/// The interface's place among all, in the order in which they are first named.
std::size_t rankOf(const InterfaceAddress& address, const std::vector<InterfaceAddress>& all) {
    const auto first = std::ranges::find(all, address.interface, &InterfaceAddress::interface);
    return static_cast<std::size_t>(first - all.begin());
}

Candidate candidate(const InterfaceAddress& address, const std::vector<InterfaceAddress>& all) {
    Candidate result{&address, AddressReach::nobody, false, rankOf(address, all)};
    if (!address.isRunning || address.isLoopback) return result;
    boost::system::error_code invalid;
    const auto parsed = boost::asio::ip::make_address(address.address, invalid);
    if (invalid) return result;
    result.isIPv6 = parsed.is_v6();
    result.reach =
        result.isIPv6 ? reachOfIPv6(parsed.to_v6().to_bytes()) : reachOfIPv4(parsed.to_v4().to_uint());
    return result;
}

std::vector<std::string> textsOf(const std::vector<Candidate>& candidates, AddressReach reach) {
    std::vector<std::string> texts;
    for (const auto& each : candidates) {
        const auto& text = each.source->address;
        if (each.reach == reach && std::ranges::find(texts, text) == texts.end()) texts.push_back(text);
    }
    return texts;
}

} // namespace

std::vector<std::string> reachableAddresses(const std::vector<InterfaceAddress>& addresses) {
    std::vector<Candidate> candidates;
    candidates.reserve(addresses.size());
    for (const auto& address : addresses)
        candidates.push_back(candidate(address, addresses));
    std::ranges::stable_sort(candidates, {}, [](const Candidate& each) {
        return std::tuple(!each.source->isPhysical, each.interfaceRank, each.isIPv6);
    });
    const auto ofNetwork = textsOf(candidates, AddressReach::network);
    return ofNetwork.empty() ? textsOf(candidates, AddressReach::link) : ofNetwork;
}

std::vector<std::string> networkAddresses() { return reachableAddresses(interfaceAddresses()); }

std::string hostName() {
    boost::system::error_code unknown;
    const auto name = boost::asio::ip::host_name(unknown);
    return unknown || name.empty() ? "localhost" : name;
}

std::string webSocketUrl(const std::string& address, std::uint16_t port) {
    return "ws://" + describe({address, port});
}

std::string webPageUrl(const std::string& address, std::uint16_t port) {
    return "http://" + describe({address, port}) + "/";
}

} // namespace tarnly
