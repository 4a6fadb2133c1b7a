#include "TarnlyTrack/Export/Track.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarnlyTrack/Log/SmallLogs.hpp"

namespace tarnly::track {
namespace {

using test::here;
using test::logOf;
using testing::ElementsAre;

TEST(TrackTest, GoesFromGapToGapThroughWhatHasAPosition) {
    const auto track = trackOf(
        logOf({{0, ""}, {0.5, here}, {1, ""}, {3.5, here}, {4, ""}, {5, ""}, {6.6, here}, {7, here}}));
    EXPECT_THAT(track.samples, ElementsAre(1, 3, 6, 7));
    EXPECT_THAT(track.parts, ElementsAre(Stretch{0, 2}, Stretch{2, 4}));
}

TEST(TrackTest, MayAskForAHeight) {
    const auto track =
        trackOf(logOf({{0, here + R"(,"agl_ft":5)"}, {0.5, here}, {1, R"(,"agl_ft":5)"}}), Quantity::aglFt);
    EXPECT_THAT(track.samples, ElementsAre(0));
}

} // namespace
} // namespace tarnly::track
