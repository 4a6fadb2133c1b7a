#include "TarnlyClient/Lesson/LessonTable.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "TarnlyClient/Lesson/Flying.hpp"

namespace tarnly::client {
namespace {

using test::trigger;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Le;
using testing::SizeIs;

const LessonView view{"Circuit", "connected", 184.6, "q ends the lesson", 80, 24};

TEST(LessonTableTest, BeforeTheFirstSampleNothingIsKnown) {
    const LessonFlight flight(test::script(), std::nullopt);
    EXPECT_THAT(lessonTable(view, flight),
                ElementsAre("Circuit  3:04  connected",                            //
                            "  altitude  -                   height  -",           //
                            "  bank      -                   pitch   -",           //
                            "  gear      -                   flaps   -",           //
                            "  speed     -",                                       //
                            "  fired     -",                                       //
                            "  next      welcome  at 0:00",                        //
                            "            final    through 500 ft AGL, descending", //
                            "            around   through 1000 ft AGL, climbing",  //
                            "            q ends the lesson"));
}

TEST(LessonTableTest, TheLastSampleIsShownWithWhatFiredAndWhatWaits) {
    LessonFlight flight(test::script(), std::nullopt);
    auto line = test::sample(184.5, 0, 1512.4);
    line.sample->altitudeFt = 2872.6;
    line.sample->bankDeg = -11.7;
    line.sample->pitchDeg = 0.2;
    line.sample->gearDown = true;
    line.sample->flapRatio = 0.5;
    flight.take(line);
    flight.take(test::fired("welcome", 0));
    EXPECT_THAT(lessonTable(view, flight),
                ElementsAre("Circuit  3:04  connected",                            //
                            "  altitude  2873 ft             height  1512 ft AGL", //
                            "  bank      12° left            pitch   0°",          //
                            "  gear      down                flaps   50 %",        //
                            "  speed     -",                                       //
                            "  fired     0:00    welcome",                         //
                            "  next      final   through 500 ft AGL, descending",  //
                            "            around  through 1000 ft AGL, climbing",   //
                            "            q ends the lesson"));
}

TEST(LessonTableTest, LongListsAreToldShort) {
    LoadScriptRequest script;
    for (int index = 0; index < 20; ++index)
        script.triggers.push_back(trigger("t" + std::to_string(index), "after_gear_down", {}));
    LessonFlight flight(script, std::nullopt);
    for (int index = 0; index < 10; ++index)
        flight.take(test::fired("t" + std::to_string(index), index));
    const auto lines = lessonTable(view, flight);
    EXPECT_THAT(lines, Contains("  fired     6 earlier"));
    EXPECT_THAT(lines, Contains("            0:09    t9"));
    EXPECT_THAT(lines, Contains("  next      t10  0 s after the gear went down"));
    EXPECT_THAT(lines, Contains("            and 5 more"));
}

TEST(LessonTableTest, NoLineStandsForASingleOne) {
    LoadScriptRequest script;
    for (int index = 0; index < 11; ++index)
        script.triggers.push_back(trigger("t" + std::to_string(index), "after_gear_down", {}));
    LessonFlight flight(script, std::nullopt);
    for (int index = 0; index < 5; ++index)
        flight.take(test::fired("t" + std::to_string(index), index));
    const auto lines = lessonTable(view, flight);
    EXPECT_THAT(lines, Contains("  fired     0:00    t0"));
    EXPECT_THAT(lines, Contains("            t10  0 s after the gear went down"));
}

TEST(LessonTableTest, AllThatHasFiredWaitsForNothing) {
    LessonFlight flight({}, std::nullopt);
    EXPECT_THAT(lessonTable(view, flight), Contains("  next      nothing: all have fired"));
}

TEST(LessonTableTest, ItFitsIntoTheTerminal) {
    auto script = test::script();
    script.triggers[0].id = "übermäßig-lang-✈✈✈✈✈✈✈✈✈✈✈✈✈✈✈✈";
    const LessonFlight flight(script, std::nullopt);
    auto small = view;
    small.columns = 21;
    small.rows = 6;
    const auto lines = lessonTable(small, flight);
    EXPECT_THAT(lines, SizeIs(Le(5U)));
    EXPECT_EQ(lines[0], "Circuit  3:04  conne");
    small.rows = 40;
    for (const auto& line : lessonTable(small, flight)) {
        EXPECT_LE(std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; }), 20)
            << line;
    }
    EXPECT_THAT(lessonTable(small, flight), Contains("  next      übermäßi"));
}

TEST(LessonTableTest, NoControlCharacterReachesTheTerminal) {
    LoadScriptRequest script{
        {trigger("a\x1b[2J", "after_trigger", {{"after_trigger_id", JsonScalar{std::string("\x1b[A")}}})}};
    LessonFlight flight(script, std::nullopt);
    auto wild = view;
    wild.lesson = "b\x1b]0;x\x07";
    for (const auto& line : lessonTable(wild, flight))
        EXPECT_EQ(line.find('\x1b'), std::string::npos) << line;
    flight.take(test::fired("c\x1b", 1));
    for (const auto& line : lessonTable(wild, flight))
        EXPECT_EQ(line.find('\x1b'), std::string::npos) << line;
}

TEST(LessonTableTest, EachConditionHasItsWords) {
    const auto text = [](const std::string& kind, const std::map<std::string, JsonScalar>& condition) {
        return conditionText(trigger("x", kind, condition));
    };
    EXPECT_EQ(text("after_start", {{"seconds", JsonScalar{90.0}}}), "at 1:30");
    EXPECT_EQ(text("after_gear_down", {{"seconds", JsonScalar{2.5}}}), "2.5 s after the gear went down");
    EXPECT_EQ(text("after_trigger",
                   {{"seconds", JsonScalar{3.0}}, {"after_trigger_id", JsonScalar{std::string("a")}}}),
              "3 s after a");
    EXPECT_EQ(text("crosses_altitude", {{"feet", JsonScalar{3000.0}}, {"climbing", JsonScalar{false}}}),
              "through 3000 ft indicated, descending");
    EXPECT_EQ(
        text("reaches_fix", {{"fix", JsonScalar{std::string("RIDGE")}}, {"within_nm", JsonScalar{0.5}}}),
        "within 0.5 nm of RIDGE");
}

} // namespace
} // namespace tarnly::client
