#include "TarnlyTrack/Plot/PlotPicture.hpp"

#include <gmock/gmock.h>

using namespace tarnly::track;
using testing::HasSubstr;
using testing::Not;

namespace {

PlotFlight smallFlight() {
    PlotFlight flight;
    flight.name = "a.jsonl";
    flight.seconds = 3725;
    flight.lines[0] = {{{0, 100, 3000, 3725}, {1000, 2000, 1500, 1000}, {0, 2}}};
    flight.track = {{0, 100, 3000}, {47, 47.1, 47.2}, {8, 8.1, 8.2}, {0, 2}};
    flight.fired = {{"rotate", "speak", 100}};
    return flight;
}

TEST(PlotPictureTest, DrawsNoLineAcrossAGap) {
    const auto picture = plotPicture({smallFlight()});
    // Of the track: two points that are joined, and one that is not.
    EXPECT_THAT(picture,
                testing::ContainsRegex("class=\"line i0\" d=\"M[0-9. ]+h0.1L[0-9. ]+M[0-9. ]+h0.1\""));
    EXPECT_THAT(picture, HasSubstr("0:00:00"));
    EXPECT_THAT(picture, HasSubstr("Altitude, indicated, ft"));
    EXPECT_THAT(picture, HasSubstr("Nothing was recorded of it."));
}

TEST(PlotPictureTest, EscapesWhatPeopleHaveNamed) {
    auto flight = smallFlight();
    flight.name = "<a & \"b\">\x01\xff.jsonl";
    const auto picture = plotPicture({flight});
    EXPECT_THAT(picture, HasSubstr("&lt;a &amp; &quot;b&quot;&gt;?\xef\xbf\xbd.jsonl"));
}

TEST(PlotPictureTest, NamesFlightsByLettersWhereThereAreSeveral) {
    EXPECT_THAT(plotPicture({smallFlight()}), Not(HasSubstr("A  a.jsonl")));
    const auto picture = plotPicture({smallFlight(), smallFlight()});
    EXPECT_THAT(picture, HasSubstr("B  a.jsonl"));
    EXPECT_THAT(picture, HasSubstr(">B1<"));
    EXPECT_THAT(picture, HasSubstr("class=\"line i1\""));
}

TEST(PlotPictureTest, IsThereForAnEmptyRecordingAsWell) {
    EXPECT_THAT(plotPicture({PlotFlight{}}), HasSubstr("No position was recorded."));
}

} // namespace
