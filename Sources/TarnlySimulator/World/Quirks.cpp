#include "TarnlySimulator/World/Quirks.hpp"

#include <algorithm>
#include <string>

namespace tarnly::simulator {
namespace {

constexpr QuirkSwitch switches[] = {
    {"main-menu", &Quirks::mainMenu, "The main menu is shown: no flight, and no dataref at all"},
    {"traffic-disabled", &Quirks::trafficDisabled,
     "Incoming traffic is disabled: everything is answered with status 403"},
    {"traffic-disabled-plain", &Quirks::trafficDisabledPlain,
     "The same, with a plain text in place of an error in JSON"},
    {"too-old", &Quirks::tooOld,
     "A version without the present interface: 404 outside /api/v1, capabilities included"},
    {"handshake-refused", &Quirks::handshakeRefused, "A WebSocket's handshake is refused with status 500"},
    {"handshake-late", &Quirks::handshakeLate, "A WebSocket's handshake is answered so much later",
     &Quirks::handshakeLateBy},
    {"duration-required", &Quirks::durationRequired,
     "Activating a command without a duration is refused with status 400"},
    {"late-datarefs", &Quirks::lateDatarefs, "Add-ons have not registered their datarefs yet"},
    {"null-entries", &Quirks::nullEntries, "Some entries of the command list are null"},
    {"awkward-catalogue", &Quirks::awkwardCatalogue,
     "The catalogues have names that are not UTF-8, null, and entries that lack an id or a name"},
    {"non-finite", &Quirks::nonFinite,
     "The height above ground is infinite, the indicated altitude is not a number"},
    {"silent", &Quirks::silent,
     "It hangs: connections are accepted, and nothing is answered, pings included"},
    {"values-stop", &Quirks::valuesStop,
     "Subscriptions are accepted, but no values are sent; all else is answered"},
    {"mid-message", &Quirks::midMessage,
     "Each WebSocket ends its next message in the middle and says nothing more, ever"},
    {"pings-unanswered", &Quirks::pingsUnanswered, "Pings are not answered"},
    {"idle-close", &Quirks::idleClose, "Connections without traffic are closed after that time",
     &Quirks::idleCloseAfter},
    {"stuck", &Quirks::stuck, "A new subscription stops the values of the earlier ones"},
    {"result-per-dataref", &Quirks::resultPerDataref,
     "A request for several datarefs is answered by one result for each"},
    {"slow", &Quirks::slow, "Every answer comes so much later", &Quirks::slowBy},
};

} // namespace

std::span<const QuirkSwitch> quirkSwitches() { return switches; }

const QuirkSwitch* quirkSwitchNamed(std::string_view name) {
    std::string wanted(name);
    std::ranges::replace(wanted, '_', '-');
    const auto found = std::ranges::find(switches, wanted, &QuirkSwitch::name);
    return found == std::end(switches) ? nullptr : &*found;
}

} // namespace tarnly::simulator
