#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <optional>

#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"
#include "TarnlyCore/Script/TriggerEngine.hpp"
#include "TarnlyCore/Script/Triggers.hpp"

// What fires is not lost for lack of memory, whichever request for memory fails.

namespace {

/// How many requests of this thread succeed before one fails; absent: all do.
thread_local std::optional<int> left;

} // namespace

void* operator new(std::size_t size) {
    if (left && (*left)-- == 0) {
        left.reset();
        throw std::bad_alloc();
    }
    if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}

// Inlined, g++ 12 takes it for the mate of another `new`, a false alarm.
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace tarnly {
namespace {

using testing::ElementsAre;

/// Whether nothing of `step` failed when it could ask for memory so many times.
bool succeeds(int requests, const auto& step) {
    left = requests;
    try {
        step();
        left.reset();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// Takes `flight` through one failure after the other, until it meets none; says how many there were.
int failuresOf(const auto& flight) {
    int number = 0;
    while (!flight(number))
        ++number;
    return number;
}

TEST(ScarceMemory, WhatCouldNotFireFiresOnTheNextSample) {
    const FixResolver noFix = [](const std::string&) { return std::nullopt; };
    const TriggerEngine engine(
        {test::armed("late", test::afterTrigger("early")), test::armed("early", test::afterStart(1)),
         test::armed("last", test::afterTrigger("late"))},
        noFix);
    const int failures = failuresOf([&](int number) {
        auto mine = engine;
        FiredTriggers fired;
        const TriggerSample sample{.elapsed = 1};
        const bool isWhole = succeeds(number, [&] { fired = mine.evaluate(sample); });
        if (!isWhole) {
            EXPECT_THAT(mine.fired(), testing::IsEmpty());
            fired = mine.evaluate({.elapsed = 1.5});
        }
        EXPECT_THAT(test::ids(fired), ElementsAre("early", "late", "last")) << number;
        EXPECT_THAT(test::ids(mine.fired()), ElementsAre("early", "late", "last"));
        EXPECT_THAT(mine.waiting(), testing::IsEmpty());
        return isWhole;
    });
    EXPECT_GE(failures, 4);
}

TEST(ScarceMemory, WhatHasFiredIsRecordedWithItsSampleByTheNextCall) {
    const auto fired = test::firing(1, {"first"});
    const int failures = failuresOf([&](int number) {
        const test::TemporaryFolder folder;
        test::VirtualClock clock;
        FlightRecorder recording(folder.path(), clock);
        recording.start();
        test::waitUntilWritten(recording);
        bool hasFired = false;
        const auto fire = [&](const TrackSample&) {
            hasFired = true;
            return fired;
        };
        const bool isWhole =
            succeeds(number, [&] { recording.recordSample(test::sampleAt(1), std::nullopt, fire); });
        recording.recordSample(test::sampleAt(2));
        recording.stop();
        test::waitUntilWritten(recording);
        const auto flight = test::catchUp(recording);
        EXPECT_EQ(flight.fired.size(), hasFired ? 1U : 0U) << number;
        EXPECT_EQ(flight.samples.size(), hasFired ? 2U : 1U) << number;
        EXPECT_TRUE(hasFired || !isWhole);
        const auto file = std::filesystem::directory_iterator(folder.path())->path();
        const auto log = test::readLogFile(file);
        EXPECT_EQ(log.lines.size(), flight.samples.size() + flight.fired.size());
        return isWhole;
    });
    EXPECT_GE(failures, 4);
}

TEST(ScarceMemory, WhatHasFiredIsRecordedAtTheEndAtTheLatest) {
    const auto fired = test::firing(1, {"first"});
    const int failures = failuresOf([&](int number) {
        const test::TemporaryFolder folder;
        test::VirtualClock clock;
        FlightRecorder recording(folder.path(), clock);
        recording.start();
        bool hasFired = false;
        const auto fire = [&](const TrackSample&) {
            hasFired = true;
            return fired;
        };
        const bool isWhole =
            succeeds(number, [&] { recording.recordSample(test::sampleAt(1), std::nullopt, fire); });
        recording.stop();
        EXPECT_EQ(test::catchUp(recording).fired.size(), hasFired ? 1U : 0U) << number;
        return isWhole;
    });
    EXPECT_GE(failures, 4);
}

} // namespace
} // namespace tarnly
