#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnlyPlatform/Dnssd/ServiceBrowser.hpp"
#include "TarnlyPlatform/Net/Http.hpp"

namespace tarnly::client {

/// Which companion is meant, and how long to look for it.
struct CompanionSearch {
    /// Of several companions the one of this name.
    std::optional<std::string> instance;
    /// With `port` where the companion is; without them it is looked for.
    std::optional<std::string> host;
    std::uint16_t port = 0;
    std::chrono::milliseconds patience{10'000};
};

/// The companions on the network. Blocks for `patience` at most, and less when the one named `instance` is
/// found. Throws `ClientError` when there is no DNS-SD daemon to ask.
std::vector<FoundService> findCompanions(std::chrono::milliseconds patience,
                                         const std::optional<std::string>& instance = {});

/// Where a companion is.
struct CompanionPlace {
    /// By which it can be found again; absent where the person said where it is.
    std::optional<std::string> name;
    Endpoint endpoint;

    bool operator==(const CompanionPlace&) const = default;
};

/// The only companion, or the one named `instance`. Throws `ClientError` with advice for the person when
/// there is none or no telling which.
CompanionPlace chooseCompanion(const std::vector<FoundService>& found,
                               const std::optional<std::string>& instance);

/// Where the companion is that `search` means. Blocks while it looks around; throws as the two above.
CompanionPlace locateCompanion(const CompanionSearch& search);

/// What looks for the companion called `name` again, and not for long: there will be another time. It throws
/// as the above. Empty where there is no name to look for.
std::function<Endpoint()> locatorOf(CompanionSearch search, const std::optional<std::string>& name);

} // namespace tarnly::client
