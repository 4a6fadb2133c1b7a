#include "TarnlyTrack/Plot/Thinning.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

using namespace tarnly::track;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

using Values = std::vector<double>;

/// Two samples a second.
Values timesOf(std::size_t count) {
    Values times(count);
    for (std::size_t i = 0; i < count; ++i)
        times[i] = 0.5 * static_cast<double>(i);
    return times;
}

KeptSamples thin(const Values& values, std::size_t columns, const std::vector<RunNumber>& runs,
                 const std::vector<std::size_t>& pinned = {}) {
    return thinned(timesOf(values.size()), values, runs, pinned, columns);
}

KeptSamples thin(const Values& values, std::size_t columns, const std::vector<std::size_t>& pinned = {}) {
    return thin(values, columns, std::vector<RunNumber>(values.size(), 0), pinned);
}

/// Never the same twice in a row.
Values noise(std::size_t count) {
    Values values(count);
    unsigned state = 12345;
    for (auto& value : values) {
        state = state * 1664525 + 1013904223;
        value = static_cast<double>(state >> 8) / 1000;
    }
    return values;
}

TEST(ThinningTest, LeavesAShortLineAsItIs) {
    EXPECT_THAT(thin({3, 1, 2, 5}, 2).samples, ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(thin({}, 2).samples, IsEmpty());
}

TEST(ThinningTest, KeepsTheLeastAndTheGreatestOfEachColumn) {
    const auto values = noise(10000);
    const std::size_t columns = 100;
    const auto kept = thin(values, columns).samples;
    EXPECT_LE(kept.size(), 2 * columns + 2);
    for (std::size_t column = 0; column < columns; ++column) {
        // The last sample stands on the last column's edge.
        const auto begin = static_cast<std::size_t>(std::ceil(99.99 * static_cast<double>(column)));
        const auto end = static_cast<std::size_t>(std::ceil(99.99 * static_cast<double>(column + 1)));
        const auto first = values.begin() + static_cast<std::ptrdiff_t>(begin);
        const auto last = values.begin() + static_cast<std::ptrdiff_t>(end);
        const auto [least, greatest] = std::minmax_element(first, last);
        EXPECT_THAT(kept, Contains(static_cast<std::size_t>(least - values.begin()))) << column;
        EXPECT_THAT(kept, Contains(static_cast<std::size_t>(greatest - values.begin()))) << column;
    }
    EXPECT_TRUE(std::is_sorted(kept.begin(), kept.end()));
}

TEST(ThinningTest, KeepsTheMomentsOfTriggers) {
    const auto values = noise(10000);
    const auto without = thin(values, 20).samples;
    const std::vector<std::size_t> pinned{1234, 1235, 9000};
    const auto kept = thin(values, 20, pinned).samples;
    for (const auto sample : pinned) {
        EXPECT_FALSE(std::binary_search(without.begin(), without.end(), sample)) << "it is kept anyway";
        EXPECT_TRUE(std::binary_search(kept.begin(), kept.end(), sample));
    }
    EXPECT_EQ(kept.size(), without.size() + pinned.size());
}

TEST(ThinningTest, KeepsTheEndsOfAndTheBreaksBetweenRuns) {
    const auto values = noise(3000);
    std::vector<RunNumber> runs(values.size(), 0);
    std::fill(runs.begin() + 1001, runs.begin() + 1500, inNoRun);
    std::fill(runs.begin() + 1500, runs.end(), 1);
    const auto kept = thin(values, 5, runs);
    for (const std::size_t sample : {0UL, 1000UL, 1500UL, 2999UL})
        EXPECT_THAT(kept.samples, Contains(sample));
    for (const auto sample : kept.samples)
        EXPECT_NE(runs[sample], inNoRun);
    ASSERT_THAT(kept.breaks, SizeIs(2));
    EXPECT_EQ(kept.breaks[0], 0);
    EXPECT_EQ(kept.samples[kept.breaks[1]], 1500);
}

TEST(ThinningTest, NeedsNoPointsOnALevelLineButThoseOfTriggers) {
    const Values steps{0, 0, 0, 0, 1, 1, 1, 1};
    EXPECT_THAT(thin(steps, 1000).samples, ElementsAre(0, 3, 4, 7));
    const std::vector<std::size_t> pinned{2};
    EXPECT_THAT(thin(steps, 1000, pinned).samples, ElementsAre(0, 2, 3, 4, 7));
}

TEST(ThinningTest, ShowsWhenALevelLineWasLeft) {
    // One sample of 5000 is another: the level stays level up to it.
    Values values(5000, 1.0);
    values[2500] = 0;
    const auto kept = thin(values, 10).samples;
    EXPECT_THAT(kept, Contains(2500));
    for (std::size_t i = 1; i < kept.size(); ++i) {
        const bool isSlope = values[kept[i - 1]] != values[kept[i]];
        EXPECT_TRUE(!isSlope || kept[i] - kept[i - 1] <= 501) << kept[i - 1] << " to " << kept[i];
    }
}

TEST(ThinningTest, EndsARunWhereAValueIsNotKnown) {
    const std::vector<RunNumber> runs{0, 0, 0, 0, 1, inNoRun, 1};
    const Values values{1, nan, 2, 3, 4, 5, 6};
    EXPECT_THAT(runsOfKnown(runs, values), ElementsAre(1, inNoRun, 2, 2, 3, inNoRun, 4));
}

TEST(ThinningTest, UnitesWhatTwoColumnsKeep) {
    const std::vector<RunNumber> runs{0, 0, 0, 1, 1};
    const KeptSamples a{{0, 2, 4}, {0, 2}};
    const KeptSamples b{{0, 3}, {0, 1}};
    EXPECT_EQ(united(a, b, runs), (KeptSamples{{0, 2, 3, 4}, {0, 2}}));
}

} // namespace
