#include "TarnlyCore/NavSource/NavOrder.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

namespace tarnly {
namespace {

int rankOf(const NavEntry& entry) {
    switch (entry.kind) {
        case NavKind::fix:
            return entry.isEnRoute() ? 0 : 6;
        case NavKind::vor:
            return 1;
        case NavKind::ndb:
            return entry.isEnRoute() ? 2 : 4;
        case NavKind::dme:
            return 3;
        case NavKind::airport:
            return 5;
    }
    return 6;
}

/// No field of a row has a blank.
std::string keyOf(const NavEntry& entry) {
    return std::to_string(static_cast<int>(entry.kind)) + " " + entry.ident + " " + entry.region + " " +
           entry.area;
}

auto placeOf(const NavOrder::Ranked& ranked) {
    const auto& entry = ranked.entry;
    return std::tuple(std::string_view(entry.ident), rankOf(entry), !ranked.isUsers,
                      std::string_view(entry.region), std::string_view(entry.area), ranked.number);
}

} // namespace

void NavOrder::add(NavEntry entry, bool isUsers) {
    if (!overridden_.empty() && overridden_.contains(keyOf(entry))) return;
    entries_.push_back({std::move(entry), isUsers, entries_.size()});
}

void NavOrder::overrideLater() {
    for (; firstNotOver_ < entries_.size(); ++firstNotOver_)
        overridden_.insert(keyOf(entries_[firstNotOver_].entry));
}

std::vector<NavOrder::Ranked> NavOrder::take() {
    std::ranges::sort(entries_, [](const Ranked& a, const Ranked& b) { return placeOf(a) < placeOf(b); });
    overridden_.clear();
    firstNotOver_ = 0;
    return std::exchange(entries_, {});
}

} // namespace tarnly
