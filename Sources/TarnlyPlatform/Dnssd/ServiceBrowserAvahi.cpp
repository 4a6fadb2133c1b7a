#include "TarnlyPlatform/Dnssd/ServiceBrowser.hpp"

#include <avahi-client/client.h>
#include <avahi-client/lookup.h>
#include <avahi-common/address.h>
#include <avahi-common/error.h>
#include <avahi-common/malloc.h>
#include <avahi-common/simple-watch.h>
#include <avahi-common/strlst.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tarnly {
namespace {

using SteadyClock = std::chrono::steady_clock;
using SimplePoll = std::unique_ptr<AvahiSimplePoll, decltype(&avahi_simple_poll_free)>;
using Client = std::unique_ptr<AvahiClient, decltype(&avahi_client_free)>;

/// A service as one interface and family tells it. Sorted so that the sighting that counts comes first for
/// each name.
struct Sighting {
    std::string name;
    AvahiProtocol protocol; // IPv4 is less than IPv6
    AvahiIfIndex interface;

    auto operator<=>(const Sighting&) const = default;
};

bool isLinkLocal(const AvahiAddress& address) {
    const auto& bytes = address.data.ipv6.address;
    return address.proto == AVAHI_PROTO_INET6 && bytes[0] == 0xFE && (bytes[1] & 0xC0U) == 0x80U;
}

std::string literal(const AvahiAddress& address, AvahiIfIndex interface) {
    std::array<char, AVAHI_ADDRESS_STR_MAX> text{};
    avahi_address_snprint(text.data(), text.size(), &address);
    std::string result = text.data();
    std::array<char, IF_NAMESIZE> scope{};
    if (isLinkLocal(address) && ::if_indextoname(static_cast<unsigned>(interface), scope.data()) != nullptr) {
        result.append("%").append(scope.data());
    }
    return result;
}

/// The client library hands the entries over in reverse order: the last one assigned is the first of the
/// record.
std::map<std::string, std::string> entries(AvahiStringList* list) {
    std::map<std::string, std::string> result;
    for (; list != nullptr; list = avahi_string_list_get_next(list)) {
        char* key = nullptr;
        char* value = nullptr;
        std::size_t size = 0;
        if (avahi_string_list_get_pair(list, &key, &value, &size) != 0) continue;
        result.emplace(key, value == nullptr ? std::string() : std::string(value, size));
        avahi_free(key);
        avahi_free(value);
    }
    return result;
}

[[noreturn]] void throwNoDaemon(int error) {
    throw std::runtime_error(std::string("the DNS-SD daemon (Avahi) cannot be reached: ") +
                             avahi_strerror(error));
}

/// One search, from the first question to the last answer. The callbacks only take notes.
class Search {
  public:
    explicit Search(const std::string& type) {
        if (!poll_) throwNoDaemon(AVAHI_ERR_NO_MEMORY);
        int error = AVAHI_OK;
        client_.reset(avahi_client_new(avahi_simple_poll_get(poll_.get()), static_cast<AvahiClientFlags>(0),
                                       onClientState, this, &error));
        if (!client_) throwNoDaemon(error);
        const auto* browser =
            avahi_service_browser_new(client_.get(), AVAHI_IF_UNSPEC, AVAHI_PROTO_UNSPEC, type.c_str(),
                                      nullptr, static_cast<AvahiLookupFlags>(0), onBrowse, this);
        if (browser == nullptr) throwNoDaemon(avahi_client_errno(client_.get()));
    }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    /// Takes what the daemon says within `patience`. Answers false when that has passed, or all has been
    /// said.
    bool listen(std::chrono::milliseconds patience) {
        if (patience.count() <= 0 || (toldAll_ && resolving_ == 0)) return false;
        const bool works = avahi_simple_poll_iterate(poll_.get(), static_cast<int>(patience.count())) == 0;
        if (!works || failed_) throwNoDaemon(AVAHI_ERR_DISCONNECTED);
        return true;
    }

    /// Whether something has been found since the last call.
    bool hasNews() { return std::exchange(news_, false); }

    std::vector<FoundService> found() const {
        std::vector<FoundService> services;
        for (const auto& [sighting, service] : sightings_) {
            if (services.empty() || services.back().name != service.name) services.push_back(service);
        }
        return services;
    }

  private:
    static void onClientState(AvahiClient*, AvahiClientState state, void* self) {
        if (state == AVAHI_CLIENT_FAILURE) static_cast<Search*>(self)->failed_ = true;
    }

    static void onBrowse(AvahiServiceBrowser* browser, AvahiIfIndex interface, AvahiProtocol protocol,
                         AvahiBrowserEvent event, const char* name, const char* type, const char* domain,
                         AvahiLookupResultFlags, void* self) {
        auto& search = *static_cast<Search*>(self);
        switch (event) {
            case AVAHI_BROWSER_NEW:
                search.resolve(avahi_service_browser_get_client(browser), interface, protocol, name, type,
                               domain);
                break;
            case AVAHI_BROWSER_REMOVE:
                search.sightings_.erase({name, protocol, interface});
                break;
            case AVAHI_BROWSER_ALL_FOR_NOW:
                search.toldAll_ = true;
                break;
            case AVAHI_BROWSER_FAILURE:
                search.failed_ = true;
                break;
            case AVAHI_BROWSER_CACHE_EXHAUSTED:
                break;
        }
    }

    /// Asks for an address of the family in which the service was seen: hosts tell each family's own there,
    /// and a question for one that a host does not have is answered by silence only.
    void resolve(AvahiClient* client, AvahiIfIndex interface, AvahiProtocol protocol, const char* name,
                 const char* type, const char* domain) {
        const auto* resolver =
            avahi_service_resolver_new(client, interface, protocol, name, type, domain, protocol,
                                       static_cast<AvahiLookupFlags>(0), onResolve, this);
        if (resolver != nullptr) ++resolving_;
    }

    static void onResolve(AvahiServiceResolver* resolver, AvahiIfIndex interface, AvahiProtocol protocol,
                          AvahiResolverEvent event, const char* name, const char*, const char*,
                          const char* hostName, const AvahiAddress* address, std::uint16_t port,
                          AvahiStringList* txt, AvahiLookupResultFlags, void* self) {
        auto& search = *static_cast<Search*>(self);
        if (event == AVAHI_RESOLVER_FOUND) {
            search.sightings_[{name, protocol, interface}] = {name, hostName, literal(*address, interface),
                                                              port, entries(txt)};
            search.news_ = true;
        }
        --search.resolving_;
        avahi_service_resolver_free(resolver);
    }

    SimplePoll poll_{avahi_simple_poll_new(), avahi_simple_poll_free};
    Client client_{nullptr, avahi_client_free}; // depends-on: poll_; owns browser and resolvers
    std::map<Sighting, FoundService> sightings_;
    int resolving_ = 0;
    bool toldAll_ = false;
    bool news_ = false;
    bool failed_ = false;
};

} // namespace

std::vector<FoundService> browseServices(
    const std::string& type, std::chrono::milliseconds patience,
    const std::function<bool(const std::vector<FoundService>&)>& enough) {
    const auto deadline = SteadyClock::now() + patience;
    Search search(type);
    const auto left = [&] {
        return std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
    };
    while (search.listen(left())) {
        if (search.hasNews() && enough && enough(search.found())) break;
    }
    return search.found();
}

} // namespace tarnly
