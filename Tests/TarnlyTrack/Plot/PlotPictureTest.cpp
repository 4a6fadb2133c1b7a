#include "TarnlyTrack/Plot/PlotPicture.hpp"

#include <gmock/gmock.h>

using namespace tarnly::track;
using testing::HasSubstr;
using testing::Not;

namespace {

PlotFlight hourLongFlight() {
    PlotFlight flight;
    flight.name = "a.jsonl";
    flight.seconds = 3725;
    flight.lines[0] = {{{0, 100, 3000, 3725}, {1000, 2000, 1500, 1000}, {0, 2}}};
    flight.track = {{0, 100, 3000}, {47, 47.1, 47.2}, {8, 8.1, 8.2}, {0, 2}};
    flight.fired = {{"rotate", "speak", 100}};
    return flight;
}

TEST(PlotPictureTest, DrawsNoLineAcrossAGap) {
    const auto picture = plotPicture({hourLongFlight()});
    // Of the track: two points that are joined, and one that is not.
    EXPECT_THAT(picture,
                testing::ContainsRegex("class=\"line i0\" d=\"M[0-9. ]+h0.1L[0-9. ]+M[0-9. ]+h0.1\""));
    EXPECT_THAT(picture, HasSubstr(">50:00<"));
    EXPECT_THAT(picture, HasSubstr("a.jsonl, 1:02:05"));
    EXPECT_THAT(picture, HasSubstr("Altitude, indicated, ft"));
    EXPECT_THAT(picture, HasSubstr("Nothing was recorded of it."));
}

TEST(PlotPictureTest, EscapesWhatPeopleHaveNamed) {
    auto flight = hourLongFlight();
    flight.name = "<a & \"b\">\x01\xff.jsonl";
    const auto picture = plotPicture({flight});
    EXPECT_THAT(picture, HasSubstr("&lt;a &amp; &quot;b&quot;&gt;?\xef\xbf\xbd.jsonl"));
}

TEST(PlotPictureTest, NamesFlightsByLettersWhereThereAreSeveral) {
    EXPECT_THAT(plotPicture({hourLongFlight()}), Not(HasSubstr("A  a.jsonl")));
    const auto picture = plotPicture({hourLongFlight(), hourLongFlight()});
    EXPECT_THAT(picture, HasSubstr("B  a.jsonl"));
    EXPECT_THAT(picture, HasSubstr(">B1<"));
    EXPECT_THAT(picture, HasSubstr("class=\"line i1\""));
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

TEST(PlotPictureTest, MarksWhatAScriptWouldHaveDoneBesideWhatFired) {
    auto flight = hourLongFlight();
    flight.trial = PlotTrial{"<lesson>.json",
                             {{"rotate", "speak", 100}},
                             {{"gate", "closest 3 nm to GATE at 50:00, and waits for 1 nm", 3000},
                              {"gear", "the recording does not tell of the gear", {}}}};
    const auto picture = plotPicture({flight});
    // On the track, on the altitude, and in the list; of the height above ground nothing is known.
    EXPECT_EQ(count(picture, "class=\"would s0\""), 3);
    EXPECT_EQ(count(picture, "class=\"miss s0\""), 4); // two in the list
    EXPECT_EQ(count(picture, "class=\"f0\""), 1);
    EXPECT_THAT(picture, HasSubstr(">s1<"));
    EXPECT_THAT(picture, HasSubstr(">m1<"));
    EXPECT_THAT(picture, Not(HasSubstr(">m2<")));
    EXPECT_THAT(picture, HasSubstr("What the script &lt;lesson&gt;.json would have done<"));
    EXPECT_THAT(picture, HasSubstr("s1  rotate: would have fired at 1:40"));
    EXPECT_THAT(picture,
                HasSubstr("m1  gate: would not have fired: closest 3 nm to GATE at 50:00, and waits"));
    EXPECT_THAT(picture,
                HasSubstr("m2  gear: would not have fired: the recording does not tell of the gear"));
}

TEST(PlotPictureTest, WordsThatAreTooLongForALineGoOnBelow) {
    auto flight = hourLongFlight();
    flight.trial = PlotTrial{"a", {}, {{"x", std::string(100, 'w') + " " + std::string(150, 'v'), {}}}};
    const auto picture = plotPicture({flight});
    EXPECT_THAT(picture, HasSubstr(std::string(100, 'w') + "</text>"));
    EXPECT_THAT(picture, HasSubstr(">" + std::string(120, 'v') + "</text>"));
    EXPECT_THAT(picture, HasSubstr(">" + std::string(30, 'v') + "</text>"));
    EXPECT_EQ(count(picture, "class=\"miss s0\""), 1);
}

TEST(PlotPictureTest, IsThereForAnEmptyRecordingAsWell) {
    EXPECT_THAT(plotPicture({PlotFlight{}}), HasSubstr("No position was recorded."));
}

} // namespace
