#include "TarnlyTrack/Grade/Approach.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TarnlyTrack/Grade/Flights.hpp"

namespace tarnly::track {
namespace {

using test::fired;
using test::gradeOf;
using test::numberText;
using test::sample;
using test::verdictOf;

struct Point {
    double aglFt = 0;
    std::string fields = R"("bank_deg":2)";
};

/// A sample a second from `begin` on; the field is 1000 ft high.
std::string heights(const std::vector<Point>& points, double begin = 0) {
    std::string lines;
    for (const auto& [agl, fields] : points)
        lines += sample(begin++, agl + 1000, R"("agl_ft":)" + numberText(agl) + "," + fields);
    return lines;
}

std::string steep(double bank) { return R"("bank_deg":)" + numberText(bank); }

const std::string stable = R"("kind":"stable_at","feet":500,)";
const std::string level = stable + R"("bank_deg":15)";

TEST(Approach, FromTheHeightToTheFlareItIsJudged) {
    // Banked before and in the flare, where it does not count.
    const auto lines = heights({{520, steep(40)}, {500, steep(15)}, {300}, {51}, {50, steep(40)}, {0}});
    EXPECT_EQ(verdictOf(lines, level), "met: stable from 500 ft AGL, at 0:01, until 0:03");
    const auto grade = gradeOf(lines, level);
    EXPECT_EQ(grade.part, (Stretch{1, 4}));
    EXPECT_EQ(grade.judgedSeconds, 2);
    EXPECT_FALSE(grade.worst);
}

TEST(Approach, WhatIsNotStableIsToldWithItsWorstMoment) {
    const auto lines = heights({{520}, {480}, {400, steep(-20)}, {300, steep(22.5)}, {200}, {40}});
    EXPECT_EQ(verdictOf(lines, level), "not met: bank 22.5° at 0:03, at most 15° asked for");
    EXPECT_EQ(gradeOf(lines, level).worst, 3U);
    EXPECT_EQ(gradeOf(lines, level).judgedSeconds, 3);
    EXPECT_EQ(gradeOf(lines, level).outsideSeconds, 2);
}

TEST(Approach, TheLastDescentCounts) {
    const auto lines = heights({{520}, {480, steep(60)}, {0}, {520}, {490}, {40}});
    EXPECT_EQ(verdictOf(lines, level), "met: stable from 500 ft AGL, at 0:04, until 0:04");
    EXPECT_EQ(verdictOf(fired("on", 0) + lines + fired("off", 5), level + R"(,"to_s":3)"),
              "not met: bank 60° at 0:01, at most 15° asked for");
}

TEST(Approach, AGoAroundEndsItAtItsLowestPoint) {
    const auto up = R"("bank_deg":2,"gear_down":false)";
    const auto down = R"("bank_deg":2,"gear_down":true)";
    const auto lines = heights({{520, down}, {450, down}, {200, down}, {260, up}, {480, up}, {700, up}});
    EXPECT_EQ(verdictOf(lines, stable + R"("gear_down":true)"),
              "met: stable from 500 ft AGL, at 0:01, until 0:02");
    EXPECT_EQ(gradeOf(lines, stable + R"("gear_down":true)").part, (Stretch{1, 3}));
}

TEST(Approach, WithoutADescentNothingIsJudged) {
    EXPECT_EQ(verdictOf(heights({{400}, {300}, {600}, {700}}), level),
              "not judged: the recording shows no descent through 500 ft AGL");
    EXPECT_EQ(gradeOf(heights({{400}, {300}}), level).part, Stretch());
    EXPECT_EQ(verdictOf(sample(0, 1), level),
              "not judged: the recording shows no descent through 500 ft AGL");
}

TEST(Approach, AGapAtItsBeginningLeavesItUnjudged) {
    const auto lines = heights({{600}, {550}}) + heights({{450, steep(50)}, {30}}, 10);
    EXPECT_EQ(verdictOf(lines, level),
              "not judged: the recording does not tell how the aircraft came down through 500 ft AGL");
}

TEST(Approach, WhereTheAircraftWasPutDownNothingIsJudged) {
    const auto high = R"("bank_deg":2,"lat":47,"lon":8)";
    const auto low = R"("bank_deg":40,"lat":47.5,"lon":8)";
    EXPECT_EQ(verdictOf(heights({{3000, high}, {3000, high}, {450, low}, {400, low}, {30, low}}), level),
              "not judged: the recording does not tell how the aircraft came down through 500 ft AGL");
}

TEST(Approach, AGapWithinItIsNotCounted) {
    const auto lines = heights({{600}, {450, steep(50)}}) + heights({{300}, {100}, {30}}, 30);
    EXPECT_EQ(gradeOf(lines, level).judgedSeconds, 1);
    EXPECT_EQ(gradeOf(lines, level).outsideSeconds, 0);
}

TEST(Approach, HeightsThatAreNotKnownAreNoEnd) {
    const auto lines = heights({{600}}) + sample(1, 1500, steep(50)) + heights({{450}}, 2) +
                       sample(3, 1400, steep(20)) + heights({{300}, {10}}, 4);
    EXPECT_EQ(verdictOf(lines, level), "not met: bank 20° at 0:03, at most 15° asked for");
}

TEST(Approach, PitchHasALeastAndAMost) {
    const auto pitched = [](double pitch) { return R"("pitch_deg":)" + numberText(pitch); };
    const auto lines = heights({{600, pitched(0)}, {450, pitched(-3)}, {300, pitched(4)}, {10, pitched(9)}});
    const auto pitch = [](double least, double most) {
        return stable + R"("pitch_at_least_deg":)" + numberText(least) + R"(,"pitch_at_most_deg":)" +
               numberText(most);
    };
    EXPECT_EQ(verdictOf(lines, pitch(-3, 4)), "met: stable from 500 ft AGL, at 0:01, until 0:02");
    EXPECT_EQ(
        verdictOf(lines, pitch(-2.5, 3.5)),
        "not met: pitch -3° at 0:01, at least -2.5° asked for; pitch 4° at 0:02, at most 3.5° asked for");
}

TEST(Approach, GearAndFlapsAreAskedFor) {
    const auto set = [](const std::string& gear, double flaps) {
        return R"("gear_down":)" + gear + R"(,"flap_ratio":)" + numberText(flaps);
    };
    const auto lines = heights(
        {{600, set("false", 0)}, {450, set("true", 0.5)}, {300, set("true", 1)}, {10, set("true", 1)}});
    EXPECT_EQ(verdictOf(lines, stable + R"("gear_down":true,"flap_ratio":0.5)"),
              "met: stable from 500 ft AGL, at 0:01, until 0:02");
    EXPECT_EQ(verdictOf(lines, stable + R"("gear_down":false,"flap_ratio":0.6)"),
              "not met: gear handle down at 0:01, up asked for; flaps 0.5 at 0:01, at least 0.6 asked for");
    const auto late = heights({{600, set("false", 0)}, {450, set("false", 0)}, {10, set("true", 1)}});
    EXPECT_EQ(verdictOf(late, stable + R"("gear_down":true)"),
              "not met: gear handle up at 0:01, down asked for");
}

/// Down by `step` feet each second.
std::string descending(double from, double step) {
    std::vector<Point> points;
    for (auto agl = from; agl > 0; agl -= step)
        points.push_back({agl});
    return heights(points);
}

TEST(Approach, TheDescentIsThatOfSomeSeconds) {
    // 12 feet a second, and one altitude that is off by six, as figures from sample to sample would be by
    // 360.
    auto lines = descending(640, 12);
    EXPECT_EQ(verdictOf(lines, stable + R"("descent_fpm":720)"),
              "met: stable from 500 ft AGL, at 0:12, until 0:49");
    EXPECT_EQ(verdictOf(lines, stable + R"("descent_fpm":700)"),
              "not met: descent 720 ft/min at 0:12, at most 700 ft/min asked for");
    const auto place = lines.find(R"("alt_ft":1280)");
    ASSERT_NE(place, std::string::npos);
    lines.replace(place, 13, R"("alt_ft":1274)");
    EXPECT_EQ(verdictOf(lines, stable + R"("descent_fpm":810)"),
              "met: stable from 500 ft AGL, at 0:12, until 0:49");
}

TEST(Approach, WhatTheRecordingDoesNotTellIsNamedOnce) {
    const auto lines = heights({{600}, {450}, {10}});
    EXPECT_EQ(verdictOf(lines, level + R"(,"pitch_at_least_deg":0,"pitch_at_most_deg":5,"gear_down":true)"),
              "not judged: the recording does not tell: pitch, gear handle");
    // A fault is one, whatever else is unknown.
    EXPECT_EQ(verdictOf(lines, stable + R"("bank_deg":1,"gear_down":true)"),
              "not met: bank 2° at 0:01, at most 1° asked for");
    EXPECT_EQ(verdictOf(lines, stable + R"("descent_fpm":700)"),
              "not judged: the recording does not tell: descent");
}

} // namespace
} // namespace tarnly::track
