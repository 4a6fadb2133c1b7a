#include "TarnlyCore/NavSource/NavOrder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnly {
namespace {

using testing::ElementsAre;

NavEntry entry(NavKind kind, const std::string& ident, const std::string& area, const std::string& region,
               const std::string& name = "") {
    return {kind, ident, area, region, name, {}};
}

std::vector<std::string> names(NavOrder& order) {
    std::vector<std::string> all;
    for (const auto& ranked : order.take())
        all.push_back(ranked.entry.name);
    return all;
}

TEST(NavOrder, OfOneNameEnRouteFixesComeFirstAndTerminalOnesLast) {
    NavOrder order;
    order.add(entry(NavKind::fix, "X", "ZZTA", "AA", "terminal fix"), false);
    order.add(entry(NavKind::airport, "X", "", "AA", "airport"), false);
    order.add(entry(NavKind::ndb, "X", "ZZTA", "AA", "terminal NDB"), false);
    order.add(entry(NavKind::dme, "X", "ENRT", "AA", "DME"), false);
    order.add(entry(NavKind::ndb, "X", "ENRT", "AA", "NDB"), false);
    order.add(entry(NavKind::vor, "X", "ENRT", "AA", "VOR"), false);
    order.add(entry(NavKind::fix, "X", "ENRT", "ZZ", "fix"), false);
    order.add(entry(NavKind::fix, "W", "ZZTA", "ZZ", "another name"), false);
    EXPECT_THAT(names(order), ElementsAre("another name", "fix", "VOR", "NDB", "DME", "terminal NDB",
                                          "airport", "terminal fix"));
}

TEST(NavOrder, AmongEqualsThePersonsOwnThenRegionThenTheFiles) {
    NavOrder order;
    order.add(entry(NavKind::vor, "X", "ENRT", "ZZ", "own"), true);
    order.add(entry(NavKind::vor, "X", "ENRT", "LO", "first of LO"), false);
    order.add(entry(NavKind::vor, "X", "ENRT", "LO", "second of LO"), false);
    order.add(entry(NavKind::vor, "X", "ENRT", "ED", "ED"), false);
    EXPECT_THAT(names(order), ElementsAre("own", "ED", "first of LO", "second of LO"));
    EXPECT_EQ(order.size(), 0U);
}

TEST(NavOrder, WhatOverridesReplacesItsLikeAndNothingElse) {
    NavOrder order;
    order.add(entry(NavKind::fix, "X", "ENRT", "ED", "own"), true);
    order.overrideLater();
    order.add(entry(NavKind::fix, "X", "ENRT", "ED", "shipped"), false);
    order.add(entry(NavKind::fix, "X", "ENRT", "LO", "other region"), false);
    order.add(entry(NavKind::fix, "X", "ZZTA", "ED", "other area"), false);
    order.add(entry(NavKind::vor, "X", "ENRT", "ED", "other kind"), false);
    EXPECT_THAT(names(order), ElementsAre("own", "other region", "other kind", "other area"));
}

} // namespace
} // namespace tarnly
