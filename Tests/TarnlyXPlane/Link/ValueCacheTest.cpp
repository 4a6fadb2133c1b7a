#include "TarnlyXPlane/Link/ValueCache.hpp"

#include <gtest/gtest.h>

#include <thread>

namespace tarnly {
namespace {

TEST(ValueCache, IsEmptyAtFirst) {
    const ValueCache cache;
    EXPECT_EQ(cache.scalar(1), std::nullopt);
    EXPECT_EQ(cache.array(1), std::nullopt);
    EXPECT_EQ(cache.element(1, 0), std::nullopt);
}

TEST(ValueCache, ValuesReplaceEarlierOnesAndOthersStay) {
    ValueCache cache;
    cache.apply({{{1, 10}, {2, 20}}, {{3, {1, 2, 3}}}});
    cache.apply({{{1, 11}}, {{3, {4}}}});
    EXPECT_EQ(cache.scalar(1), 11);
    EXPECT_EQ(cache.scalar(2), 20);
    EXPECT_EQ(cache.array(3), (std::vector<double>{4}));
}

TEST(ValueCache, AnArrayNeverPassesForAScalar) {
    ValueCache cache;
    cache.apply({{{1, 10}}, {{1, {7}}, {2, {8}}}});
    EXPECT_EQ(cache.scalar(1), 10);
    EXPECT_EQ(cache.element(1, 0), 7);
    EXPECT_EQ(cache.scalar(2), std::nullopt);
}

TEST(ValueCache, ElementsOutsideTheArrayAreAbsent) {
    ValueCache cache;
    cache.apply({{}, {{3, {1, 2}}, {4, {}}}});
    EXPECT_EQ(cache.element(3, 0), 1);
    EXPECT_EQ(cache.element(3, 1), 2);
    EXPECT_EQ(cache.element(3, 2), std::nullopt);
    EXPECT_EQ(cache.element(3, -1), std::nullopt);
    EXPECT_EQ(cache.element(3, INT64_MIN), std::nullopt);
    EXPECT_EQ(cache.element(3, INT64_MAX), std::nullopt);
    EXPECT_EQ(cache.element(4, 0), std::nullopt);
}

#ifndef NDEBUG
TEST(ValueCacheDeathTest, BelongsToTheThreadThatUsesItFirst) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ValueCache cache;
    cache.apply({{{1, 10}}, {}});
    EXPECT_DEATH(std::thread([&] { cache.apply({}); }).join(), "belongs to one thread");
}
#endif

} // namespace
} // namespace tarnly
