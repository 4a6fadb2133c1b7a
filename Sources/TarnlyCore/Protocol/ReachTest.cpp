#include "TarnlyCore/Protocol/ReachTest.hpp"

#include <string_view>

namespace tarnly {
namespace {

using Outcome = ReachFinding::Outcome;
using Visits = std::optional<VisitStatus> VisitorsStatus::*;

constexpr std::string_view webSocketScheme = "ws://";

const VisitStatus* visitIn(const std::optional<VisitorsStatus>& visitors, Visits kind) {
    if (!visitors || !((*visitors).*kind)) return nullptr;
    return &*((*visitors).*kind);
}

/// The last visit of a kind, where there has been one since. A companion that was started anew has counted
/// anew.
const VisitStatus* newVisit(const std::optional<VisitorsStatus>& before,
                            const std::optional<VisitorsStatus>& now, Visits kind) {
    const auto* last = visitIn(now, kind);
    const auto* known = visitIn(before, kind);
    const bool isKnown = last != nullptr && known != nullptr && *last == *known;
    return isKnown ? nullptr : last;
}

} // namespace

ReachFinding ReachTest::look(const CompanionStatus& now) const {
    if (const auto* paired = newVisit(before_, now.visitors, &VisitorsStatus::paired)) {
        return {Outcome::fine, Phrase::of("%1 has reached this computer, and has paired.", paired->from), {}};
    }
    if (const auto* refused = newVisit(before_, now.visitors, &VisitorsStatus::refused)) {
        return {
            Outcome::refused,
            Phrase::of("%1 has reached this computer, and its password was refused.", refused->from),
            Phrase::of(
                "Enter the password that stands in the companion's settings; upper and lower case count.")};
    }
    if (const auto* page = newVisit(before_, now.visitors, &VisitorsStatus::page)) {
        return {Outcome::fine,
                Phrase::of("%1 has reached this computer, and was shown the page.", page->from),
                {}};
    }
    return {Outcome::nobodyYet, Phrase::of("Nobody has reached this computer yet."), {}};
}

ReachFinding ReachTest::neverArrived(const CompanionStatus& now) {
    const auto port =
        now.port ? Phrase::of("TCP port %1", std::to_string(*now.port)) : Phrase::of("its TCP port");
    return {
        Outcome::nobodyYet,
        Phrase::of("Nobody has reached this computer: what the device sent never arrived."),
        Phrase::of("Let the firewall of this computer accept %1. Look whether the device is in the same "
                   "network: a Wi-Fi for guests, or one with \"client "
                   "isolation\", keeps its devices apart; use another one, or switch that off in the router.",
                   port)};
}

Phrase ReachTest::instruction() { return Phrase::of("Open this address on the device, or scan it:"); }

ReachFinding ReachTest::withoutAddress(bool isListening) {
    if (!isListening)
        return {Outcome::nobodyYet, Phrase::of("Tarnly is not listening."),
                Phrase::of("The panel says why; mend that, and start Tarnly again.")};
    return {Outcome::nobodyYet, Phrase::of("This computer has no address in a network."),
            Phrase::of("Connect it to the one that the device is in.")};
}

std::vector<std::string> ReachTest::pages(const CompanionStatus& now) {
    std::vector<std::string> pages;
    for (const auto& address : now.addresses) {
        if (!address.starts_with(webSocketScheme)) continue;
        pages.push_back("http://" + address.substr(webSocketScheme.size()) + "/");
    }
    return pages;
}

} // namespace tarnly
