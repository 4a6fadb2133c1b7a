#include "TarnlyTrack/Plot/PlotPage.hpp"

#include <gmock/gmock.h>

#include "TarnlyPlatform/Json/JsonParser.hpp"

using namespace tarnly::track;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

PlotFlight halfMinuteFlight() {
    PlotFlight flight;
    flight.name = "session-2026-11-16T010938Z.jsonl";
    flight.start = "2026-11-16T01:09:38Z";
    flight.seconds = 30.5;
    flight.samples = 3;
    flight.highestFt = 1416.5;
    flight.gaps = {{0.5, 30}};
    flight.lines[0] = {{{0.004, 0.506, 30}, {1416.5, 1416.4, 1420}, {0, 2}}};
    flight.track = {{0.004, 30}, {47.4581, 47.4582}, {8.5481, 8.548}, {0}};
    flight.fired = {{"gear-check", "speak", 0.506}};
    return flight;
}

TEST(PlotPageTest, WritesStepsInWholeUnits) {
    EXPECT_EQ(plotJson({halfMinuteFlight()}),
              R"({"flights":[{"name":"session-2026-11-16T010938Z.jsonl","start":"2026-11-16T01:09:38Z",)"
              R"("seconds":30.5,"samples":3,"highest_ft":1416.5,"gaps":[[0.5,30]],"frozen":[],)"
              R"("lines":{"alt_ft":[{"at":[0,51,2949],"value":[14165,-1,36],"unit":0.1,"breaks":[0,2]}]},)"
              R"("track":{"at":[0,3000],"lat":[47458100,100],"lon":[8548100,-100],"breaks":[0]},)"
              R"("fired":[{"id":"gear-check","action":"speak","at":0.506}]}]})");
}

TEST(PlotPageTest, WritesWhatAScriptWouldHaveDone) {
    PlotFlight flight;
    flight.name = "a.jsonl";
    flight.trial = PlotTrial{"lesson.json",
                             {{"rotate", "speak", 40.5}},
                             {{"gate", "closest 3 nm to GATE", 12}, {"gear", "no gear", {}}}};
    EXPECT_THAT(plotJson({flight}),
                HasSubstr(R"("fired":[],"trial":{"script":"lesson.json",)"
                          R"("fired":[{"id":"rotate","action":"speak","at":40.5}],)"
                          R"("missed":[{"id":"gate","words":"closest 3 nm to GATE","at":12},)"
                          R"({"id":"gear","words":"no gear"}]}}]})"));
}

TEST(PlotPageTest, WritesGrades) {
    PlotFlight flight;
    PlotGrade held;
    held.title = "Circuit height";
    held.verdict = "not met";
    held.words = "farthest 60 ft above 1500 ft, at 0:01";
    held.worst = 1;
    held.values = {{"altitude", "ft", {{0, 1}, {1500, 1560.5}, {0}}, {1400, 1550}}};
    PlotGrade took;
    took.title = "Base to final";
    took.verdict = "met";
    took.tookSeconds = 40.5;
    took.permittedSeconds.most = 60;
    flight.grades = {held, took};
    EXPECT_THAT(
        plotJson({flight}),
        HasSubstr(R"("grades":[{"title":"Circuit height","verdict":"not met",)"
                  R"("words":"farthest 60 ft above 1500 ft, at 0:01","worst":1,"values":[{"name":"altitude",)"
                  R"("unit":"ft","least":1400,"most":1550,"line":{"at":[0,100],"value":[150000,6050],)"
                  R"("unit":0.01,"breaks":[0]}}]},{"title":"Base to final","verdict":"met","words":"",)"
                  R"("values":[],"took":{"seconds":40.5,"most":60}}]}]})"));
}

TEST(PlotPageTest, LetsNoTextEndTheElementInWhichItStands) {
    auto flight = halfMinuteFlight();
    flight.name = "</script><script>alert(1)</script>.jsonl";
    flight.fired[0].id = "<!-- <script>\xff";
    flight.trial = PlotTrial{"<!--", {{"<script>", "<b>", 1}}, {{"</script>", "</script>", 2}}};
    const auto json = plotJson({flight});
    EXPECT_THAT(json, Not(HasSubstr("<")));
    EXPECT_THAT(json, HasSubstr("\\u003c\\/script>"));
    EXPECT_NO_THROW(tarnly::parseJson(json));
}

TEST(PlotPageTest, PutsTheFlightsIntoThePageOnce) {
    auto flight = halfMinuteFlight();
    flight.fired[0].id = "@flights@";
    const auto page = plotPage({flight});
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
    EXPECT_THAT(page, HasSubstr(R"(<script type="application/json" id="flights">{"flights":[)"));
    EXPECT_THAT(page, HasSubstr(R"("id":"@flights@")"));
}

TEST(PlotPageTest, KeepsTheWholePageSmallHoweverManyFlightsItHas) {
    EXPECT_EQ(plotColumns(1), 4096);
    EXPECT_EQ(plotColumns(4), 2048);
    EXPECT_EQ(plotColumns(mostFlights), 1024);
}

} // namespace
