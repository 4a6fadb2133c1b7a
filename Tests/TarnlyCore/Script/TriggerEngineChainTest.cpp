#include <gmock/gmock.h>

#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyCore/Script/Triggers.hpp"

namespace tarnly {
namespace {

using test::afterStart;
using test::afterTrigger;
using test::armed;
using test::at;
using test::ids;
using test::nan;
using test::noFix;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = TriggerConditionKind;

TEST(TriggerEngineChain, FiresAgainstTheOrderOfTheScriptOnOneSample) {
    TriggerEngine engine({armed("b", afterTrigger("a")), armed("a", afterStart(0))}, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("a", "b"));
}

TEST(TriggerEngineChain, FiresAlongTheOrderOfTheScriptInOneWalk) {
    TriggerEngine engine(
        {armed("a", afterStart(0)), armed("b", afterTrigger("a")), armed("c", afterTrigger("b"))}, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("a", "b", "c"));
}

TEST(TriggerEngineChain, ALaterWalkTakesForwardLinksAlongAndLeavesBackwardOnesToTheNext) {
    // Walks: start; then 1, and 4 behind it; then 0 and 2 and, behind 2, 5.
    TriggerEngine engine(
        {armed("0", afterTrigger("1")), armed("1", afterTrigger("start")), armed("2", afterTrigger("4")),
         armed("start", afterStart(0)), armed("4", afterTrigger("1")), armed("5", afterTrigger("2"))},
        noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("start", "1", "4", "0", "2", "5"));
}

TEST(TriggerEngineChain, OneWalkFiresInLoadOrderWhateverFiredFirst) {
    // Both wait behind "1" and "2", which a later walk fires in this order.
    TriggerEngine engine(
        {armed("1", afterTrigger("start")), armed("2", afterTrigger("start")), armed("3", afterTrigger("2")),
         armed("4", afterTrigger("1")), armed("start", afterStart(0))},
        noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("start", "1", "2", "3", "4"));
}

TEST(TriggerEngineChain, DelaysCountFromTheFiring) {
    TriggerEngine engine({armed("b", afterTrigger("a", 2)), armed("a", afterStart(1))}, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(1.5))), ElementsAre("a"));
    EXPECT_THAT(ids(engine.evaluate(at(3))), IsEmpty());
    EXPECT_THAT(ids(engine.evaluate(at(3.5))), ElementsAre("b"));
}

TEST(TriggerEngineChain, ANegativeDelayIsOverAtOnce) {
    TriggerEngine engine({armed("b", afterTrigger("a", -5)), armed("a", afterStart(1))}, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), IsEmpty());
    EXPECT_THAT(ids(engine.evaluate(at(1))), ElementsAre("a", "b"));
}

TEST(TriggerEngineChain, AClockThatGoesBackPutsTheDelayOff) {
    TriggerEngine engine(
        {armed("a", afterStart(100)), armed("b", afterTrigger("a", 1)), armed("c", afterTrigger("a", -50))},
        noFix);
    EXPECT_THAT(ids(engine.evaluate(at(100))), ElementsAre("a", "c"));
    EXPECT_THAT(ids(engine.evaluate(at(0))), IsEmpty());
    EXPECT_THAT(ids(engine.evaluate(at(100.5))), IsEmpty());
    EXPECT_THAT(ids(engine.evaluate(at(101))), ElementsAre("b"));
}

TEST(TriggerEngineChain, NothingWaitsForItselfOrInACircle) {
    TriggerEngine engine({armed("self", afterTrigger("self", -1)), armed("x", afterTrigger("y")),
                          armed("y", afterTrigger("x")), armed("start", afterStart(0))},
                         noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("start"));
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("self", "x", "y"));
}

TEST(TriggerEngineChain, AnIdOutsideTheScriptNeverFires) {
    TriggerEngine engine({armed("a", afterTrigger("elsewhere", -1)), armed("b", afterTrigger("", -1)),
                          armed("c", afterTrigger("START", -1)), armed("start", afterStart(0))},
                         noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("start"));
}

TEST(TriggerEngineChain, ADelayAndAnIdAreRequired) {
    TriggerEngine engine({armed("start", afterStart(0)),
                          armed("no delay", {.kind = Kind::afterTrigger, .afterTriggerId = "start"}),
                          armed("no id", {.kind = Kind::afterTrigger, .seconds = 0}),
                          armed("not a number", afterTrigger("start", nan))},
                         noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("start"));
    EXPECT_THAT(ids(engine.evaluate(at(nan))), IsEmpty());
}

TEST(TriggerEngineChain, ATriggerThatFiredAtNoTimeHasFiredButStartsNoDelay) {
    // A crossing needs no clock.
    TriggerEngine engine({armed("climb", test::crossing(Kind::crossesAltitude, 1000, true)),
                          armed("after", afterTrigger("climb", -1))},
                         noFix);
    engine.evaluate({.elapsed = 0, .altFt = 900});
    EXPECT_THAT(ids(engine.evaluate({.elapsed = nan, .altFt = 1100})), ElementsAre("climb"));
    EXPECT_THAT(ids(engine.waiting()), ElementsAre("after"));
    engine.evaluate({.elapsed = 1, .altFt = 900});
    EXPECT_THAT(ids(engine.evaluate({.elapsed = 2, .altFt = 1100})), IsEmpty());
}

// Shared ids

TEST(TriggerEngineChain, OfTriggersThatShareAnIdOnlyTheFirstToFireFires) {
    auto later = armed("a", afterStart(2));
    auto earlier = armed("a", afterStart(1));
    later.name = "later";
    earlier.name = "earlier";
    TriggerEngine engine({later, earlier}, noFix);
    const auto fired = engine.evaluate(at(1)).described();
    ASSERT_THAT(ids(fired), ElementsAre("a"));
    EXPECT_EQ(fired.front().title, "earlier");
    EXPECT_THAT(engine.waiting(), IsEmpty());
    EXPECT_THAT(engine.evaluate(at(2)), IsEmpty());
}

TEST(TriggerEngineChain, OfTriggersThatShareAnIdTheFirstInTheScriptFiresWhenBothCan) {
    auto first = armed("a", afterStart(0));
    auto second = first;
    first.name = "first";
    second.name = "second";
    TriggerEngine engine({first, second}, noFix);
    const auto fired = engine.evaluate(at(0)).described();
    ASSERT_EQ(fired.size(), 1U);
    EXPECT_EQ(fired.front().title, "first");
}

TEST(TriggerEngineChain, ATriggerWaitingForItsOwnSharedIdIsDoneWithTheOther) {
    TriggerEngine engine(
        {armed("a", afterTrigger("a")), armed("a", afterStart(0)), armed("a", afterTrigger("a"))}, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("a"));
    EXPECT_THAT(engine.waiting(), IsEmpty());
}

TEST(TriggerEngineChain, AnyTriggerOfASharedIdStartsTheDelay) {
    TriggerEngine engine(
        {armed("b", afterTrigger("a")), armed("a", afterStart(5)), armed("a", afterStart(1))}, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(1))), ElementsAre("a", "b"));
}

// Size. A walk a trigger would take minutes here.

constexpr int manyTriggers = 100'000;

std::string id(int number) { return "t" + std::to_string(number); }

TEST(TriggerEngineChain, ALongChainAgainstTheOrderOfTheScriptFiresOnOneSample) {
    std::vector<ArmedTrigger> script;
    for (int i = manyTriggers; i > 1; --i)
        script.push_back(armed(id(i), afterTrigger(id(i - 1))));
    script.push_back(armed(id(1), afterStart(0)));
    TriggerEngine engine(script, noFix);
    const auto fired = engine.evaluate(at(0)).described();
    ASSERT_EQ(fired.size(), script.size());
    for (std::size_t i = 0; i < fired.size(); ++i) {
        ASSERT_EQ(fired[i].triggerId, script[script.size() - 1 - i].id);
    }
    EXPECT_THAT(engine.waiting(), IsEmpty());
}

TEST(TriggerEngineChain, ManyTriggersBehindOneFireInLoadOrder) {
    std::vector<ArmedTrigger> script;
    for (int i = 0; i < manyTriggers; ++i)
        script.push_back(armed(id(i), afterTrigger("start")));
    script.push_back(armed("start", afterStart(0)));
    TriggerEngine engine(script, noFix);
    const auto fired = engine.evaluate(at(0)).described();
    ASSERT_EQ(fired.size(), script.size());
    EXPECT_EQ(fired.front().triggerId, "start");
    for (std::size_t i = 1; i < fired.size(); ++i)
        ASSERT_EQ(fired[i].triggerId, script[i - 1].id);
}

TEST(TriggerEngineChain, ManyTriggersOfOneIdFireOnce) {
    std::vector<ArmedTrigger> script(manyTriggers, armed("a", afterTrigger("start")));
    script.push_back(armed("start", afterStart(0)));
    TriggerEngine engine(script, noFix);
    EXPECT_THAT(ids(engine.evaluate(at(0))), ElementsAre("start", "a"));
    EXPECT_THAT(engine.waiting(), IsEmpty());
}

} // namespace
} // namespace tarnly
