#include "TarnlyClient/Companion/RecordedLines.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tarnly::client {
namespace {

/// "s1.5" for a sample, an id for a trigger, in the order of the lines.
std::vector<std::string> order(const std::vector<double>& samples,
                               const std::vector<std::pair<std::string, double>>& fired) {
    RecordedFlight recorded;
    for (const double elapsed : samples) {
        TrackSample sample;
        sample.elapsedSeconds = elapsed;
        recorded.samples.push_back(sample);
    }
    for (const auto& [id, elapsed] : fired)
        recorded.fired.push_back({id, elapsed, "speak"});
    std::vector<std::string> result;
    for (const auto& line : linesInLogOrder(recorded)) {
        EXPECT_TRUE(line.isComplete());
        result.push_back(line.sample ? "s" + std::to_string(static_cast<int>(line.sample->elapsedSeconds))
                                     : line.fired->triggerId);
    }
    return result;
}

using Lines = std::vector<std::string>;

TEST(RecordedLines, ATriggerFollowsItsSample) {
    EXPECT_EQ(order({1, 2, 3}, {{"a", 1}, {"b", 1}, {"c", 3}}), (Lines{"s1", "a", "b", "s2", "s3", "c"}));
}

TEST(RecordedLines, ATriggerWhoseSampleIsNotThereComesBeforeALaterSample) {
    EXPECT_EQ(order({2}, {{"a", 1}, {"b", 2}, {"c", 3}}), (Lines{"a", "s2", "b", "c"}));
}

TEST(RecordedLines, AFirstSampleOfALaterTimeKeepsItsTriggers) {
    EXPECT_EQ(order({9, 1, 2}, {{"a", 9}, {"b", 1}}), (Lines{"s9", "a", "s1", "b", "s2"}));
}

TEST(RecordedLines, NothingIsNothing) {
    EXPECT_EQ(order({}, {}), Lines{});
    EXPECT_EQ(order({1}, {}), Lines{"s1"});
    EXPECT_EQ(order({}, {{"a", 1}}), Lines{"a"});
}

} // namespace
} // namespace tarnly::client
