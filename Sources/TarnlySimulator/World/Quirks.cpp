#include "TarnlySimulator/World/Quirks.hpp"

#include <algorithm>

namespace tarnly::simulator {
namespace {

constexpr QuirkSwitch switches[] = {
    {"main-menu", &Quirks::mainMenu, "The main menu is shown: no flight, and no dataref at all"},
    {"traffic-disabled", &Quirks::trafficDisabled,
     "Incoming traffic is disabled: everything is answered with status 403"},
    {"duration-required", &Quirks::durationRequired,
     "Activating a command without a duration is refused with status 400"},
    {"late-datarefs", &Quirks::lateDatarefs, "Add-ons have not registered their datarefs yet"},
    {"null-entries", &Quirks::nullEntries, "Some entries of the command list are null"},
    {"non-finite", &Quirks::nonFinite,
     "The height above ground is infinite, the indicated altitude is not a number"},
    {"silent", &Quirks::silent, "Subscriptions are accepted, but no values are sent"},
    {"stuck", &Quirks::stuck, "A new subscription stops the values of the earlier ones"},
    {"result-per-dataref", &Quirks::resultPerDataref,
     "A request for several datarefs is answered by one result for each"},
    {"slow", &Quirks::slow, "Every answer comes late"},
};

} // namespace

std::span<const QuirkSwitch> quirkSwitches() { return switches; }

const QuirkSwitch* quirkSwitchNamed(std::string_view name) {
    const auto found = std::ranges::find(switches, name,
                                         [](const QuirkSwitch& each) { return std::string_view(each.name); });
    return found == std::end(switches) ? nullptr : &*found;
}

} // namespace tarnly::simulator
