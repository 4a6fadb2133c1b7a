#include "TarnlyCore/Script/LoadedScript.hpp"

#include <gmock/gmock.h>

#include <thread>

#include "TarnlyCore/Script/Triggers.hpp"

namespace tarnly {
namespace {

using test::afterStart;
using test::armed;
using test::at;
using test::ids;
using test::noFix;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LoadedScript, IsEmptyAtFirst) {
    LoadedScript script;
    EXPECT_FALSE(script.current());
    EXPECT_THAT(script.evaluate(at(0)), IsEmpty());
    EXPECT_FALSE(script.current());
}

TEST(LoadedScript, EvaluatesTheEngineInForceInPlace) {
    LoadedScript script;
    script.set(TriggerEngine({armed("a", afterStart(1))}, noFix));
    EXPECT_THAT(script.evaluate(at(0)), IsEmpty());
    EXPECT_THAT(ids(script.evaluate(at(1))), ElementsAre("a"));
    EXPECT_THAT(script.evaluate(at(2)), IsEmpty());
    ASSERT_TRUE(script.current());
    EXPECT_THAT(ids(script.current()->fired()), ElementsAre("a"));
}

TEST(LoadedScript, TheCurrentEngineIsACopy) {
    LoadedScript script;
    script.set(TriggerEngine({armed("a", afterStart(1))}, noFix));
    auto copy = script.current();
    ASSERT_TRUE(copy);
    EXPECT_THAT(ids(copy->evaluate(at(1))), ElementsAre("a"));
    EXPECT_THAT(ids(script.current()->waiting()), ElementsAre("a"));
}

TEST(LoadedScript, ANewEngineReplacesTheOldAndAllThatItFired) {
    LoadedScript script;
    script.set(TriggerEngine({armed("a", afterStart(0))}, noFix));
    script.evaluate(at(0));
    script.set(TriggerEngine({armed("a", afterStart(0)), armed("b", afterStart(0))}, noFix));
    EXPECT_THAT(script.current()->fired(), IsEmpty());
    EXPECT_THAT(ids(script.evaluate(at(0))), ElementsAre("a", "b"));
}

TEST(LoadedScript, OfTwoTheOneOfTheLaterPlaceIsInForceWhicheverComesFirst) {
    LoadedScript script;
    const auto earlier = script.announce();
    const auto later = script.announce();
    script.set(TriggerEngine({armed("later", afterStart(0))}, noFix), later);
    script.set(TriggerEngine({armed("earlier", afterStart(0))}, noFix), earlier);
    EXPECT_THAT(ids(script.evaluate(at(0))), ElementsAre("later"));
    script.set(TriggerEngine({armed("last", afterStart(0))}, noFix), script.announce());
    EXPECT_THAT(ids(script.evaluate(at(0))), ElementsAre("last"));
}

TEST(LoadedScript, APlaceThatNobodyTakesKeepsNobodyOut) {
    LoadedScript script;
    const auto earlier = script.announce();
    script.announce();
    script.set(TriggerEngine({armed("earlier", afterStart(0))}, noFix), earlier);
    EXPECT_THAT(ids(script.evaluate(at(0))), ElementsAre("earlier"));
}

TEST(LoadedScript, IsSafeFromManyThreads) {
    LoadedScript script;
    const TriggerEngine engine({armed("b", test::afterTrigger("a")), armed("a", afterStart(0))}, noFix);
    constexpr int rounds = 2000;
    std::thread loader([&] {
        for (int i = 0; i < rounds; ++i)
            script.set(engine);
    });
    bool isWhole = true;
    std::thread reader([&] {
        for (int i = 0; i < rounds; ++i) {
            const auto current = script.current();
            isWhole = isWhole && (!current || current->fired().size() + current->waiting().size() == 2);
        }
    });
    bool firesWhole = true;
    for (int i = 0; i < rounds; ++i) {
        const auto fired = script.evaluate(at(i));
        firesWhole = firesWhole && (fired.empty() || fired.size() == 2);
    }
    loader.join();
    reader.join();
    EXPECT_TRUE(isWhole);
    EXPECT_TRUE(firesWhole);
    EXPECT_TRUE(script.current());
}

} // namespace
} // namespace tarnly
