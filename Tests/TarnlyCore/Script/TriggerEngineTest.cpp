#include "TarnlyCore/Script/TriggerEngine.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "TarnlyCore/Script/Triggers.hpp"

namespace tarnly {
namespace {

using test::afterGearDown;
using test::afterStart;
using test::armed;
using test::at;
using test::crossing;
using test::ids;
using test::infinity;
using test::nan;
using test::noFix;
using test::reachesFix;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = TriggerConditionKind;

std::optional<Coordinate> atOrigin(const std::string&) { return Coordinate{0, 0}; }

TriggerSample atHeight(std::optional<double> altFt, std::optional<double> aglFt) {
    return {.altFt = altFt, .aglFt = aglFt};
}
TriggerSample atPosition(std::optional<double> lat, std::optional<double> lon) {
    return {.lat = lat, .lon = lon};
}
TriggerSample withGear(double elapsed, std::optional<bool> down) {
    return {.elapsed = elapsed, .gearDown = down};
}

TriggerSample overLink(std::int64_t link, TriggerSample sample) {
    sample.link = link;
    return sample;
}

/// An engine of one trigger.
class One : public TriggerEngine {
  public:
    explicit One(TriggerCondition condition, const FixResolver& fixPosition = atOrigin)
        : TriggerEngine({armed("a", std::move(condition))}, fixPosition) {}

    bool fires(const TriggerSample& sample) { return !evaluate(sample).empty(); }
};

// What is reported

TEST(TriggerEngine, NothingComesOfAnEmptyScript) {
    TriggerEngine engine({}, noFix);
    EXPECT_THAT(engine.evaluate(at(0)), IsEmpty());
    EXPECT_THAT(engine.triggers(), IsEmpty());
    EXPECT_THAT(engine.waiting(), IsEmpty());
    EXPECT_THAT(engine.fired(), IsEmpty());
    EXPECT_THAT(engine.unresolvedFixes(), IsEmpty());
}

TEST(TriggerEngine, ReportsTriggerSampleTimeAndPosition) {
    auto trigger = armed("a", afterStart(1));
    trigger.action = {{"text", {"Flaps up"}}, {"level", {2.0}}};
    TriggerEngine engine({trigger}, noFix);
    const auto fired = engine.evaluate({.elapsed = 1.5, .lat = 47, .lon = 8}).described();
    EXPECT_THAT(fired, ElementsAre(FiredTrigger{"a", "say", "say", trigger.action, 1.5, 47, 8}));
    EXPECT_EQ(engine.fired(), fired);
}

TEST(TriggerEngine, ReportsTheNameAsTitleAndNoPositionWithoutOne) {
    auto trigger = armed("a", afterStart(0));
    trigger.name = "Welcome";
    TriggerEngine engine({trigger}, noFix);
    EXPECT_THAT(engine.evaluate(at(0)).described(),
                ElementsAre(FiredTrigger{"a", "Welcome", "say", {}, 0, std::nullopt, std::nullopt}));
}

TEST(TriggerEngine, FiresEachTriggerOnceAndKeepsTheOrderOfFiring) {
    TriggerEngine engine({armed("late", afterStart(2)), armed("early", afterStart(1)), armed("never", {})},
                         noFix);
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("late", "early", "never"));
    EXPECT_THAT(ids(engine.evaluate(at(1))), ElementsAre("early"));
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("late", "never"));
    EXPECT_THAT(ids(engine.evaluate(at(2))), ElementsAre("late"));
    EXPECT_THAT(ids(engine.evaluate(at(3))), IsEmpty());
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("never"));
    EXPECT_THAT(ids(engine.fired()), ElementsAre("early", "late"));
    EXPECT_THAT(ids(engine.triggers()), ElementsAre("late", "early", "never"));
}

TEST(TriggerEngine, ResetForgetsAllButTheScript) {
    TriggerEngine engine(
        {armed("start", afterStart(0)), armed("gear", afterGearDown(5)),
         armed("climb", crossing(Kind::crossesAltitude, 1000, true)), armed("fix", reachesFix("lost", 1))},
        noFix);
    engine.evaluate({.elapsed = 0, .altFt = 900, .gearDown = true});
    engine.reset();
    EXPECT_THAT(engine.fired(), IsEmpty());
    EXPECT_EQ(engine.waiting(), engine.triggers());
    EXPECT_THAT(engine.unresolvedFixes(), ElementsAre("LOST"));
    // Neither the height nor the gear of the time before counts.
    EXPECT_THAT(ids(engine.evaluate({.elapsed = 6, .altFt = 1100, .gearDown = std::nullopt})),
                ElementsAre("start"));
}

TEST(TriggerEngine, ACopyGoesItsOwnWay) {
    TriggerEngine engine({armed("a", afterStart(1))}, noFix);
    auto copy = engine;
    EXPECT_THAT(ids(copy.evaluate(at(1))), ElementsAre("a"));
    EXPECT_THAT(engine.fired(), IsEmpty());
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("a"));
    EXPECT_THAT(ids(engine.evaluate(at(2))), ElementsAre("a"));
}

// afterStart

TEST(TriggerEngine, AfterStartWithoutDelayFiresOnTheFirstSample) {
    TriggerEngine engine({armed("a", afterStart(0))}, noFix);
    const auto fired = engine.evaluate(at(0.25)).described();
    ASSERT_EQ(fired.size(), 1U);
    EXPECT_EQ(fired.front().elapsed, 0.25);
}

TEST(TriggerEngine, AfterStartFiresWhenTheTimeHasCome) {
    One engine(afterStart(10));
    EXPECT_FALSE(engine.fires(at(9.999)));
    EXPECT_TRUE(engine.fires(at(10)));
}

TEST(TriggerEngine, AfterStartNeedsNumbers) {
    EXPECT_FALSE(One({.kind = Kind::afterStart}).fires(at(10)));
    EXPECT_FALSE(One(afterStart(nan)).fires(at(10)));
    EXPECT_FALSE(One(afterStart(0)).fires(at(nan)));
    EXPECT_TRUE(One(afterStart(-5)).fires(at(-5)));
}

// afterGearDown

TEST(TriggerEngine, AfterGearDownCountsFromTheFirstSampleWithTheGearDown) {
    One engine(afterGearDown(2));
    EXPECT_FALSE(engine.fires(withGear(10, true)));
    EXPECT_FALSE(engine.fires(withGear(11.5, true)));
    EXPECT_TRUE(engine.fires(withGear(12, true)));
}

TEST(TriggerEngine, AfterGearDownWithoutDelayFiresWithTheGear) {
    One engine(afterGearDown(0));
    EXPECT_FALSE(engine.fires(withGear(0, std::nullopt)));
    EXPECT_FALSE(engine.fires(withGear(1, false)));
    EXPECT_TRUE(engine.fires(withGear(2, true)));
}

TEST(TriggerEngine, UnknownGearKeepsThePeriod) {
    One engine(afterGearDown(2));
    EXPECT_FALSE(engine.fires(withGear(10, true)));
    EXPECT_TRUE(engine.fires(withGear(12, std::nullopt)));
}

TEST(TriggerEngine, RaisedGearEndsThePeriodAndTheNextStartsAnew) {
    One engine(afterGearDown(2));
    EXPECT_FALSE(engine.fires(withGear(10, true)));
    EXPECT_FALSE(engine.fires(withGear(11, false)));
    EXPECT_FALSE(engine.fires(withGear(20, std::nullopt)));
    EXPECT_FALSE(engine.fires(withGear(30, true)));
    EXPECT_FALSE(engine.fires(withGear(31, true)));
    EXPECT_TRUE(engine.fires(withGear(32, true)));
}

TEST(TriggerEngine, AGearPeriodOutlivesAClockThatGoesBack) {
    One engine(afterGearDown(2));
    EXPECT_FALSE(engine.fires(withGear(100, true)));
    EXPECT_FALSE(engine.fires(withGear(0, true)));
    EXPECT_FALSE(engine.fires(withGear(50, true)));
    EXPECT_TRUE(engine.fires(withGear(102, true)));
}

TEST(TriggerEngine, AGearPeriodEndsWithItsLink) {
    One engine(afterGearDown(2));
    EXPECT_FALSE(engine.fires(overLink(1, withGear(10, true))));
    EXPECT_FALSE(engine.fires(overLink(2, withGear(20, std::nullopt))));
    EXPECT_FALSE(engine.fires(overLink(2, withGear(21, true))));
    EXPECT_FALSE(engine.fires(overLink(3, withGear(30, true))));
    EXPECT_TRUE(engine.fires(overLink(3, withGear(32, true))));
}

TEST(TriggerEngine, WhatHasFiredStaysSoOverAnotherLink) {
    TriggerEngine engine({armed("start", afterStart(0)), armed("later", test::afterTrigger("start", 5))},
                         noFix);
    EXPECT_THAT(ids(engine.evaluate(overLink(1, at(0)))), ElementsAre("start"));
    EXPECT_THAT(ids(engine.evaluate(overLink(2, at(4)))), IsEmpty());
    EXPECT_THAT(ids(engine.evaluate(overLink(2, at(5)))), ElementsAre("later"));
    EXPECT_THAT(ids(engine.fired()), ElementsAre("start", "later"));
}

TEST(TriggerEngine, GearIsTrackedWhileNothingWaitsForIt) {
    TriggerEngine engine({armed("start", afterStart(0)), armed("gear", afterGearDown(5))}, noFix);
    engine.evaluate(withGear(0, true));
    EXPECT_THAT(ids(engine.evaluate(withGear(5, true))), ElementsAre("gear"));
}

TEST(TriggerEngine, AfterGearDownNeedsNumbers) {
    EXPECT_FALSE(One({.kind = Kind::afterGearDown}).fires(withGear(0, true)));
    EXPECT_FALSE(One(afterGearDown(nan)).fires(withGear(0, true)));
    EXPECT_FALSE(One(afterGearDown(-1)).fires(withGear(nan, true)));
    EXPECT_TRUE(One(afterGearDown(-1)).fires(withGear(0, true)));
}

// crossesAltitude, crossesAgl

/// Whether a step between two heights crosses 1000 ft; above sea level and above ground must agree.
bool crossesBetween(double before, double now, bool climbing) {
    One altitude(crossing(Kind::crossesAltitude, 1000, climbing));
    One agl(crossing(Kind::crossesAgl, 1000, climbing));
    EXPECT_FALSE(altitude.fires(atHeight(before, std::nullopt)));
    EXPECT_FALSE(agl.fires(atHeight(0, before)));
    const bool result = altitude.fires(atHeight(now, std::nullopt));
    EXPECT_EQ(agl.fires(atHeight(0, now)), result);
    return result;
}

TEST(TriggerEngine, ACrossingIsStrictOnTheFarSideOnly) {
    EXPECT_TRUE(crossesBetween(990, 1000, true));
    EXPECT_TRUE(crossesBetween(999, 1001, true));
    EXPECT_FALSE(crossesBetween(1000, 1010, true));
    EXPECT_FALSE(crossesBetween(990, 999.999, true));
    EXPECT_TRUE(crossesBetween(1010, 1000, false));
    EXPECT_TRUE(crossesBetween(1001, 999, false));
    EXPECT_FALSE(crossesBetween(1000, 990, false));
    EXPECT_FALSE(crossesBetween(1010, 1000.001, false));
}

TEST(TriggerEngine, ACrossingHasADirection) {
    EXPECT_FALSE(crossesBetween(1010, 990, true));
    EXPECT_FALSE(crossesBetween(990, 1010, false));
    EXPECT_FALSE(crossesBetween(1000, 1000, true));
    EXPECT_FALSE(crossesBetween(1000, 1000, false));
}

TEST(TriggerEngine, NoCrossingFromOrToNaN) {
    EXPECT_FALSE(crossesBetween(nan, 1000, true));
    EXPECT_FALSE(crossesBetween(990, nan, true));
    EXPECT_TRUE(crossesBetween(-infinity, infinity, true));
}

TEST(TriggerEngine, ACrossingNeedsThresholdAndDirection) {
    for (const auto kind : {Kind::crossesAltitude, Kind::crossesAgl}) {
        TriggerEngine engine(
            {armed("no feet", {.kind = kind, .climbing = true}),
             armed("no direction", {.kind = kind, .feet = 1000}),
             armed("not a number", crossing(kind, nan, true)), armed("whole", crossing(kind, 1000, true))},
            noFix);
        engine.evaluate(atHeight(990, 990));
        EXPECT_THAT(ids(engine.evaluate(atHeight(1010, 1010))), ElementsAre("whole"));
        EXPECT_THAT(ids(engine.evaluate(atHeight(990, 990))), IsEmpty());
    }
}

TEST(TriggerEngine, AnUnknownHeightAboveGroundIsSteppedOverByNoCrossing) {
    One engine(crossing(Kind::crossesAgl, 1000, true));
    EXPECT_FALSE(engine.fires(atHeight(0, 990)));
    EXPECT_FALSE(engine.fires(atHeight(0, std::nullopt)));
    EXPECT_FALSE(engine.fires(atHeight(0, 1010)));
    EXPECT_FALSE(engine.fires(atHeight(0, 990)));
    EXPECT_TRUE(engine.fires(atHeight(0, 1010)));
}

TEST(TriggerEngine, AnUnknownAltitudeIsNoSideOfAnyThreshold) {
    One climbing(crossing(Kind::crossesAltitude, 1000, true));
    EXPECT_FALSE(climbing.fires(atHeight(std::nullopt, std::nullopt)));
    EXPECT_FALSE(climbing.fires(atHeight(1500, std::nullopt)));
    EXPECT_FALSE(climbing.fires(atHeight(std::nullopt, std::nullopt)));
    EXPECT_FALSE(climbing.fires(atHeight(1500, std::nullopt)));
    EXPECT_FALSE(climbing.fires(atHeight(990, std::nullopt)));
    EXPECT_TRUE(climbing.fires(atHeight(1010, std::nullopt)));
    One descending(crossing(Kind::crossesAltitude, 1000, false));
    EXPECT_FALSE(descending.fires(atHeight(1500, std::nullopt)));
    EXPECT_FALSE(descending.fires(atHeight(std::nullopt, std::nullopt)));
    EXPECT_FALSE(descending.fires(atHeight(990, std::nullopt)));
}

TEST(TriggerEngine, BetweenTwoLinksThereIsNoCrossing) {
    for (const auto kind : {Kind::crossesAltitude, Kind::crossesAgl}) {
        One engine(crossing(kind, 1000, true));
        EXPECT_FALSE(engine.fires(overLink(1, atHeight(990, 990))));
        EXPECT_FALSE(engine.fires(overLink(2, atHeight(1010, 1010))));
        EXPECT_FALSE(engine.fires(overLink(2, atHeight(990, 990))));
        EXPECT_TRUE(engine.fires(overLink(2, atHeight(1000, 1000))));
    }
}

TEST(TriggerEngine, HeightsAreRememberedWhileTheScriptIsDone) {
    TriggerEngine engine(
        {armed("start", afterStart(0)), armed("climb", crossing(Kind::crossesAltitude, 1000, true))}, noFix);
    engine.evaluate(atHeight(990, std::nullopt));
    EXPECT_THAT(ids(engine.evaluate(atHeight(1000, std::nullopt))), ElementsAre("climb"));
}

// reachesFix

TEST(TriggerEngine, ReachesAFixAtTheRadiusExactly) {
    const auto distance = TriggerEngine::distanceNm(0, 1, 0, 0);
    EXPECT_TRUE(One(reachesFix("x", distance)).fires(atPosition(0, 1)));
    EXPECT_FALSE(One(reachesFix("x", std::nextafter(distance, 0))).fires(atPosition(0, 1)));
    EXPECT_TRUE(One(reachesFix("x", 0)).fires(atPosition(0, 0)));
    EXPECT_FALSE(One(reachesFix("x", -1)).fires(atPosition(0, 0)));
}

TEST(TriggerEngine, AFixNeedsPositionAndRadius) {
    EXPECT_FALSE(One(reachesFix("x", infinity)).fires(atPosition(std::nullopt, 0)));
    EXPECT_FALSE(One(reachesFix("x", infinity)).fires(atPosition(0, std::nullopt)));
    EXPECT_FALSE(One(reachesFix("x", infinity)).fires(atPosition(nan, 0)));
    EXPECT_FALSE(One(reachesFix("x", nan)).fires(atPosition(0, 0)));
    EXPECT_FALSE(One({.kind = Kind::reachesFix, .fix = "x"}).fires(atPosition(0, 0)));
    EXPECT_FALSE(One({.kind = Kind::reachesFix, .withinNm = 5}).fires(atPosition(0, 0)));
    EXPECT_TRUE(One(reachesFix("x", infinity)).fires(atPosition(89, 179)));
}

TEST(TriggerEngine, AnUnresolvedFixIsListedAndNeverReached) {
    One engine(reachesFix("lost", infinity), noFix);
    EXPECT_THAT(engine.unresolvedFixes(), ElementsAre("LOST"));
    EXPECT_FALSE(engine.fires(atPosition(0, 0)));
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("a"));
}

TEST(TriggerEngine, LooksEachFixUpOnceInUpperCase) {
    std::vector<std::string> asked;
    const auto resolve = [&asked](const std::string& ident) {
        asked.push_back(ident);
        return ident == "KSFO" ? std::optional(Coordinate{0, 0}) : std::nullopt;
    };
    TriggerEngine engine({armed("a", reachesFix("ksfo", 1)), armed("b", reachesFix("straße", 1)),
                          armed("c", reachesFix("KSFO", 1)), armed("d", reachesFix("STRASSE", 1)),
                          armed("e", reachesFix(" ksfo", 1)), armed("f", reachesFix("", 1))},
                         resolve);
    EXPECT_THAT(asked, ElementsAre("KSFO", "STRASSE", " KSFO", ""));
    EXPECT_THAT(engine.unresolvedFixes(), ElementsAre("STRASSE", " KSFO", ""));
    EXPECT_THAT(ids(engine.evaluate(atPosition(0, 0))), ElementsAre("a", "c"));
    EXPECT_EQ(asked.size(), 4U);
}

TEST(TriggerEngine, OtherKindsLookNoFixUp) {
    auto condition = afterStart(0);
    condition.fix = "ksfo";
    condition.withinNm = 1;
    int lookUps = 0;
    const auto resolve = [&lookUps](const std::string&) {
        ++lookUps;
        return std::optional<Coordinate>();
    };
    TriggerEngine engine({armed("a", condition), armed("b", {.kind = Kind::reachesFix, .withinNm = 1})},
                         resolve);
    EXPECT_EQ(lookUps, 0);
    EXPECT_THAT(engine.unresolvedFixes(), IsEmpty());
    EXPECT_THAT(ids(engine.evaluate(atPosition(0, 0))), ElementsAre("a"));
}

// Distances

TEST(TriggerEngine, DistanceOfAPointToItselfIsZero) {
    EXPECT_EQ(TriggerEngine::distanceNm(0, 0, 0, 0), 0);
    EXPECT_EQ(TriggerEngine::distanceNm(47.45, 8.55, 47.45, 8.55), 0);
}

TEST(TriggerEngine, DistanceIsMeasuredOnTheGreatCircle) {
    const double halfDegree = 1.0 * 3.141592653589793 / 180 * 0.5;
    EXPECT_EQ(TriggerEngine::distanceNm(0, 0, 0, 1), std::asin(std::sin(halfDegree)) * 6880.13);
    EXPECT_NEAR(TriggerEngine::distanceNm(0, 0, 0, 1), 60.04, 0.001);
    EXPECT_NEAR(TriggerEngine::distanceNm(90, 0, -90, 0), 6880.13 * 3.141592653589793 / 2, 1e-6);
    EXPECT_NEAR(TriggerEngine::distanceNm(0, 179.5, 0, -179.5), 60.04, 0.001);
    // Zurich to New York, by the spherical law of cosines.
    EXPECT_NEAR(TriggerEngine::distanceNm(47.464722, 8.549167, 40.639722, -73.778889), 3406.842768743629,
                1e-6);
}

TEST(TriggerEngine, DistanceWithoutANumberIsNone) {
    EXPECT_TRUE(std::isnan(TriggerEngine::distanceNm(nan, 0, 0, 0)));
    EXPECT_TRUE(std::isnan(TriggerEngine::distanceNm(0, 0, 0, infinity)));
}

} // namespace
} // namespace tarnly
