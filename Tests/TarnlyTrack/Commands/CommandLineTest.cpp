#include "TarnlyTrack/Commands/CommandLine.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Support/TemporaryFolder.hpp"

namespace tarnly::track {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::string log =
    R"({"kind":"sample","sample":{"elapsed_s":0,"alt_ft":100,"lat":47.5,"lon":8.5}})"
    "\n"
    R"({"kind":"sample","sample":{"elapsed_s":0.5,"alt_ft":150,"lat":47.51,"lon":8.5}})"
    "\n"
    R"({"kind":"fired","fired":{"trigger_id":"ge\u001bar","elapsed_s":0.5,"action_kind":"b"}})"
    "\n";

class TrackCommandLineTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    std::string output;
    std::string errors;

    int run(const std::vector<std::string>& arguments) {
        std::ostringstream out;
        std::ostringstream err;
        const int status = runTrack(arguments, out, err, false);
        output = out.str();
        errors = err.str();
        return status;
    }
};

TEST_F(TrackCommandLineTest, ListsRecordingsByTime) {
    folder.write("session-2026-11-16T010938Z.jsonl", log);
    folder.write("session-2026-11-15T010938Z.jsonl", "x\n");
    folder.write("my solo.jsonl", log);
    folder.write("notes.txt", "nothing to do with it");
    EXPECT_EQ(run({"list", folder.path()}), 0) << errors;
    std::istringstream lines(output);
    std::string line;
    std::getline(lines, line);
    EXPECT_THAT(line, AllOf(StartsWith("renamed: start not known"), HasSubstr("my solo.jsonl")));
    std::getline(lines, line);
    EXPECT_THAT(line, AllOf(StartsWith("2026-11-15 01:09:38 UTC"), HasSubstr("up to - ft"),
                            HasSubstr("1 unreadable line")));
    std::getline(lines, line);
    EXPECT_THAT(line, AllOf(StartsWith("2026-11-16 01:09:38 UTC"), HasSubstr("0:00:01"), HasSubstr("0.6 nm"),
                            HasSubstr("up to 150 ft"), HasSubstr("1 fired")));
    EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(TrackCommandLineTest, WhatCannotBeReadIsToldAndTheRestListed) {
    folder.write("b.jsonl", log);
    std::filesystem::create_directory(folder.path() / "a.jsonl");
    EXPECT_EQ(run({"list", "--json", folder.path()}), 1);
    EXPECT_THAT(errors, HasSubstr("a.jsonl cannot be read"));
    EXPECT_THAT(output, HasSubstr(R"("samples":2)"));
    EXPECT_EQ(run({"list", folder.path() / "none"}), 1);
    EXPECT_THAT(errors, HasSubstr("none cannot be listed: No such file"));
}

TEST_F(TrackCommandLineTest, ShowsWhatFiredAndLetsNothingAtTheTerminal) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    EXPECT_EQ(run({"show", file}), 0) << errors;
    EXPECT_THAT(output, HasSubstr("0:00:01  ge?ar (b) at 47.51 8.5, 150 ft indicated, - ft above ground"));
    EXPECT_EQ(run({"show", file, "--json"}), 0);
    EXPECT_THAT(output, HasSubstr(R"("time":"2026-11-16T01:09:38.500Z","lat":47.51)"));
}

TEST_F(TrackCommandLineTest, ExportsToTheOutputAndToAFile) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    EXPECT_EQ(run({"export", file, "--format", "csv"}), 0) << errors;
    EXPECT_THAT(output, HasSubstr("\r\n2026-11-16T01:09:38.500Z,0.5,1,47.51,8.5,150,"));
    const auto printed = output;
    const auto target = folder.path() / "flight.csv";
    EXPECT_EQ(run({"export", file, "--format", "csv", "-o", target}), 0) << errors;
    EXPECT_EQ(output, "");
    EXPECT_EQ(test::contentOf(target), printed);
    EXPECT_EQ(run({"export", file, "--format", "csv", "-o", folder.path() / "none" / "x"}), 1);
    EXPECT_THAT(errors, HasSubstr("cannot be written: No such file"));
}

TEST_F(TrackCommandLineTest, ARenamedRecordingNeedsItsBeginning) {
    const auto file = folder.write("my solo.jsonl", log);
    EXPECT_EQ(run({"export", file, "--format", "gpx"}), 2);
    EXPECT_THAT(errors, HasSubstr("--utc-start"));
    EXPECT_EQ(run({"export", file, "--format", "gpx", "--utc-start", "2020-01-01T00:00:00Z"}), 0) << errors;
    EXPECT_THAT(output, HasSubstr("<time>2020-01-01T00:00:00.500Z</time>"));
    EXPECT_EQ(run({"export", file, "--format", "gpx", "--utc-start", "yesterday"}), 2);
    EXPECT_THAT(errors, HasSubstr("2026-11-16T01:09:38Z"));
}

TEST_F(TrackCommandLineTest, TheRecordingItselfIsNeverReplaced) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    EXPECT_EQ(run({"export", file, "--format", "csv", "-o", folder.path() / "." / file.filename()}), 2);
    EXPECT_THAT(errors, HasSubstr("would take the place of the recording"));
    EXPECT_EQ(test::contentOf(file), log);
}

TEST_F(TrackCommandLineTest, PlotsPagesAndPictures) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log + "x\n");
    EXPECT_EQ(run({"plot", file, file}), 0);
    EXPECT_THAT(output, AllOf(StartsWith("<!DOCTYPE html>"), HasSubstr(R"("start":"2026-11-16T01:09:38)")));
    EXPECT_THAT(errors, HasSubstr("has 1 unreadable line"));
    const auto target = folder.path() / "flight.svg";
    EXPECT_EQ(run({"plot", "--svg", file, "-o", target}), 0);
    EXPECT_THAT(test::contentOf(target), HasSubstr("</svg>"));
    EXPECT_EQ(output, "");
}

TEST_F(TrackCommandLineTest, PlotsNoRecordingAwayAndNoMoreThanFit) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    const auto other = folder.write("other.jsonl", log);
    EXPECT_EQ(run({"plot", other, file, "-o", folder.path() / "." / file.filename()}), 2);
    EXPECT_THAT(errors, HasSubstr("is a recording to draw"));
    EXPECT_EQ(test::contentOf(file), log);
    EXPECT_EQ(run({"plot", file, file, file, file, file, file, file, file, file}), 2);
    EXPECT_THAT(errors, HasSubstr("at most 8 recordings"));
}

const std::string script =
    R"([{"id":"start","condition_kind":"after_start","condition":{"seconds":0.5},)"
    R"("action_kind":"speak","action":{"text":"Go."}},)"
    R"({"id":"high","condition_kind":"crosses_altitude","condition":{"feet":900,"climbing":true},)"
    R"("action_kind":"speak","action":{"text":"High."}}])";

TEST_F(TrackCommandLineTest, MarksWhatAScriptWouldHaveDone) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    const auto lesson = folder.write("lesson.json", script);
    EXPECT_EQ(run({"plot", file, "--script", lesson}), 0) << errors;
    EXPECT_EQ(errors, "");
    EXPECT_THAT(output,
                HasSubstr(R"("trial":{"script":"lesson.json","fired":[{"id":"start","action":"speak",)"
                          R"("at":0.5}],"missed":[{"id":"high",)"));
    EXPECT_THAT(output,
                HasSubstr("never above 150 ft indicated (at 0:00), and waits for 900 ft on the way up"));
    EXPECT_EQ(run({"plot", file, "--svg", "--script", lesson}), 0) << errors;
    EXPECT_THAT(output, HasSubstr("s1  start: would have fired at 0:00"));
}

// Time begins again where somebody has put two recordings into one file; the first one is drawn.
TEST_F(TrackCommandLineTest, MarksNothingWhereNothingIsDrawn) {
    const auto climb = R"({"kind":"sample","sample":{"elapsed_s":0,"alt_ft":100}})"
                       "\n"
                       R"({"kind":"sample","sample":{"elapsed_s":0.5,"alt_ft":1000}})"
                       "\n";
    const auto file = folder.write("two.jsonl", log + climb);
    const auto lesson = folder.write("lesson.json", script);
    EXPECT_EQ(run({"plot", file, "--script", lesson}), 0) << errors;
    EXPECT_THAT(output, HasSubstr(R"("fired":[{"id":"start","action":"speak","at":0.5}],"missed":[)"
                                  R"({"id":"high","words":"it fires in the second recording of the )"
                                  R"(file, which is not drawn"}]})"));
}

TEST_F(TrackCommandLineTest, ScriptsThatCannotBeTriedAreRefused) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    EXPECT_EQ(run({"plot", file, "--script", folder.write("bad.json", "[7]")}), 2);
    EXPECT_THAT(errors, AllOf(HasSubstr("bad.json:1:2: "),
                              HasSubstr("bad.json is not sent, as companions would refuse it")));
    EXPECT_EQ(run({"plot", file, "--script", folder.path() / "none.json"}), 2);
    EXPECT_THAT(errors, HasSubstr("none.json cannot be read: "));
    const auto lesson = folder.write("lesson.json", script);
    EXPECT_EQ(run({"plot", file, "--script", lesson, "--nav-db", file}), 2);
    EXPECT_THAT(errors, HasSubstr("--nav-db: "));
    EXPECT_EQ(run({"plot", file, "--nav-db", file}), 2);
    EXPECT_THAT(errors, HasSubstr("--nav-db of plot is for the fixes of a script"));
    EXPECT_EQ(run({"plot", file, "--script", lesson, "-o", lesson}), 2);
    EXPECT_THAT(errors, HasSubstr("lesson.json is the script, and no place for the plot"));
    EXPECT_EQ(test::contentOf(lesson), script);
}

const std::string tolerances =
    R"([{"id":"low","name":"Stay low","kind":"altitude_held","feet":110,"within_ft":20},)"
    R"({"id":"bank","kind":"bank_not_exceeded","bank_deg":30}])";

TEST_F(TrackCommandLineTest, DrawsGradesWithWhatWasJudged) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    const auto asked = folder.write("tolerances.json", tolerances);
    EXPECT_EQ(run({"plot", file, "--tolerances", asked}), 0) << errors;
    EXPECT_EQ(errors, "");
    EXPECT_THAT(output,
                HasSubstr(R"("grades":[{"title":"Stay low","verdict":"not met","words":"farthest 40 ft )"
                          R"(above 110 ft, at 0:00","worst":0.5,"values":[{"name":)"
                          R"("altitude","unit":"ft","least":90,"most":130,"line":{"at":[0,50],)"
                          R"("value":[10000,5000],"unit":0.01,"breaks":[0]}}]},{"title":"bank",)"
                          R"("verdict":"not judged","words":"the recording does not tell the bank",)"
                          R"("values":[]}])"));
    EXPECT_EQ(run({"plot", file, "--svg", "--tolerances", asked}), 0) << errors;
    EXPECT_THAT(output, HasSubstr(">not met: Stay low: farthest 40 ft above 110 ft"));
    EXPECT_EQ(run({"plot", file, "--tolerances", asked, "-o", asked}), 2);
    EXPECT_THAT(errors, HasSubstr("has the tolerances, and is no place for the plot"));
    EXPECT_EQ(run({"plot", file, "--tolerances", folder.write("bad.json", "[7]")}), 2);
    EXPECT_THAT(errors, AllOf(HasSubstr("bad.json:1:2: "), HasSubstr("nothing is graded by")));
}

TEST_F(TrackCommandLineTest, DrawsNoNumberThatNoAircraftHas) {
    const auto file =
        folder.write("wild.jsonl", log + R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":1e300}})"
                                         "\n"
                                         R"({"kind":"sample","sample":{"elapsed_s":1e300,"alt_ft":100}})"
                                         "\n");
    const auto asked = folder.write("tolerances.json", tolerances);
    EXPECT_EQ(run({"plot", file, "--tolerances", asked}), 0) << errors;
    EXPECT_THAT(output, HasSubstr(R"("line":{"at":[0,50],"value":[10000,5000],"unit":0.01,"breaks":[0]})"));
}

TEST_F(TrackCommandLineTest, FaultsOfTheLogAreTold) {
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log + "x\n{\"kind\":\"new\"}\n{\"ki");
    EXPECT_EQ(run({"export", file, "--format", "kml"}), 0);
    EXPECT_THAT(errors, HasSubstr("has 1 unreadable line, 1 line of an unknown kind, torn end"));
}

TEST_F(TrackCommandLineTest, GradesByTolerances) {
    const auto file = folder.write("solo.jsonl", log);
    const auto low = folder.write("low.json", R"([{"id":"lo\u001bw","kind":"altitude_held","feet":125,)"
                                              R"("within_ft":25}])");
    EXPECT_EQ(run({"grade", file, low}), 0) << errors;
    EXPECT_EQ(output, "met         lo?w: farthest 25 ft below 125 ft, at 0:00\n1 of 1 met\n");
    const auto mixed = folder.write(
        "mixed.json", R"([{"id":"a","kind":"altitude_held","feet":125,"within_ft":20},)"
                      R"({"id":"b","name":"Bank","kind":"bank_not_exceeded","bank_deg":20},)"
                      R"({"id":"c","kind":"time_between","from":"ge\u001bar","to":"gone","at_most_s":9}])");
    EXPECT_EQ(run({"grade", file, mixed}), 3);
    EXPECT_EQ(errors, "");
    EXPECT_EQ(output,
              "not met     a: farthest 25 ft below 125 ft, at 0:00; outside for 0.5 s\n"
              "not judged  Bank: the recording does not tell the bank\n"
              "not judged  c: \"gone\" did not fire\n"
              "0 of 3 met, 2 not judged\n");
    EXPECT_EQ(run({"grade", "--json", file, mixed}), 3);
    EXPECT_THAT(output, HasSubstr(R"("id":"a","title":"a","verdict":"not_met",)"
                                  R"("words":"farthest 25 ft below 125 ft, at 0:00; outside for 0.5 s",)"
                                  R"("worst_s":0,"from_s":0,"to_s":0.5,"judged_s":0.5,"outside_s":0.5})"));
    EXPECT_THAT(output, HasSubstr(R"("id":"b","title":"Bank","verdict":"not_judged")"));
    EXPECT_THAT(output, HasSubstr(R"(],"met":0,"not_met":1,"not_judged":2})"));
}

TEST_F(TrackCommandLineTest, WrongTolerancesAreToldAndNothingIsGraded) {
    const auto file = folder.write("solo.jsonl", log);
    const auto wrong = folder.write("wrong.json", "[\n{\"id\":\"a\",\"kind\":\"altitude\"}]");
    EXPECT_EQ(run({"grade", file, wrong}), 2);
    EXPECT_EQ(output, "");
    EXPECT_THAT(errors, HasSubstr("wrong.json:2:18: there is no tolerance of the kind \"altitude\"; did you "
                                  "mean \"altitude_held\"?\n"));
    EXPECT_THAT(errors, HasSubstr("tarnly-track: nothing is graded by "));
    const auto strange = folder.write(
        "strange.json", R"([{"id":"a","kind":"altitude_held","feet":125,"within_ft":99,"x":1}])");
    EXPECT_EQ(run({"grade", file, strange}), 0);
    EXPECT_THAT(errors, HasSubstr("strange.json:1:61: warning: unknown field \"x\""));
    EXPECT_EQ(run({"grade", file, folder.path()}), 1);
    EXPECT_THAT(errors, HasSubstr("cannot be read: it is no file"));
    EXPECT_EQ(run({"grade", folder.path() / "none", strange}), 1);
    EXPECT_EQ(run({"grade", file}), 2);
}

TEST_F(TrackCommandLineTest, WhatIsNotGradedIsTold) {
    const auto file = folder.write("two.jsonl", log + log + "x\n");
    const auto bank = folder.write("bank.json", R"([{"id":"a","kind":"bank_not_exceeded","bank_deg":20}])");
    EXPECT_EQ(run({"grade", file, bank}), 3);
    EXPECT_EQ(errors,
              "tarnly-track: two.jsonl has 1 unreadable line\n"
              "tarnly-track: two.jsonl has two recordings: the second one, of 2 samples, is not graded\n");
}

TEST_F(TrackCommandLineTest, WrongUsage) {
    EXPECT_EQ(run({}), 2);
    EXPECT_EQ(run({"fly"}), 2);
    EXPECT_THAT(errors, HasSubstr("\"fly\" is not expected"));
    const auto file = folder.write("session-2026-11-16T010938Z.jsonl", log);
    EXPECT_EQ(run({"export", file}), 2);
    EXPECT_EQ(run({"export", file, "--format", "shp"}), 2);
    EXPECT_THAT(errors, HasSubstr("gpx, kml, csv or geojson"));
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_THAT(output, StartsWith("tarnly-track "));
}

} // namespace
} // namespace tarnly::track
