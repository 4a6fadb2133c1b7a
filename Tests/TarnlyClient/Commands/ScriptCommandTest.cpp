#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Commands/ClientRun.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::client {
namespace {

using test::answering;
using test::ClientRun;
using test::requestOf;
using test::run;
using test::ScriptedCompanion;
using testing::EndsWith;
using testing::StartsWith;

class ScriptCommand : public testing::Test {
  public:
    ScriptCommand() { ::setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }

    /// A database with the fix RIDGE alone.
    static void makeDatabase(const std::filesystem::path& database) {
        sqlite3* connection = nullptr;
        ASSERT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(connection,
                               "CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL);"
                               "INSERT INTO enroute_fixes VALUES ('RIDGE', 47, 8)",
                               nullptr, nullptr, nullptr),
                  SQLITE_OK);
        sqlite3_close(connection);
    }

    /// With a fix that is in that database, and in the second line one that is not.
    std::string writeScript() const {
        return folder
            .write("fixes.json", R"([{"id":"a","condition_kind":"reaches_fix","action_kind":"",)"
                                 R"("action":{},"condition":{"fix":"ridge","within_nm":1}},)"
                                 "\n"
                                 R"({"id":"b","condition_kind":"reaches_fix","action_kind":"",)"
                                 R"("action":{},"condition":{"fix":"Xyzzy","within_nm":1}}])")
            .string();
    }

    const test::TemporaryFolder folder;
    const std::string file =
        folder
            .write("lesson.json", R"([{"id":"a","condition_kind":"after_start","condition":{"seconds":1},)"
                                  R"("action_kind":"speak","action":{}}])")
            .string();
};

TEST_F(ScriptCommand, SendsTheTriggers) {
    EXPECT_EQ(
        requestOf({"script", file}, R"({"unresolved_fixes":[]})"),
        R"({"type":"load_script","req_id":2,"params":{"triggers":[{"id":"a",)"
        R"("condition_kind":"after_start","condition":{"seconds":1},"action_kind":"speak","action":{}}]}})");
}

TEST_F(ScriptCommand, AScriptWhoseFixesAreKnownIsOk) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":[]})"));
    const auto outcome = run(companion, {"script", file});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ScriptCommand, WarnsOfUnknownFixes) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":["XYZZY","A\u001bB"]})"));
    const auto outcome = run(companion, {"script", file});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(outcome.err,
              "tarnly-client: warning: the companion does not know these fixes, whose triggers will never "
              "fire: XYZZY, A?B\n");
    const auto forPrograms = run(companion, {"script", file, "--json"});
    EXPECT_EQ(forPrograms.out, "{\"unresolved_fixes\":[\"XYZZY\",\"A\\u001bB\"]}\n");
    EXPECT_EQ(forPrograms.err, "");
}

constexpr auto unending = R"([{"id":"a","condition_kind":"after_start","condition":{"secnds":1},)"
                          R"("action_kind":"speak","action":{}}])";

TEST_F(ScriptCommand, WarnsOfFaultsAndSendsWhatCompanionsTake) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":[]})"));
    const auto faulty = folder.write("faulty.json", unending).string();
    const auto outcome = run(companion, {"script", faulty});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(outcome.err,
              "tarnly-client: " + faulty + ":1:56: unknown field \"secnds\"; did you mean \"seconds\"?\n");
    EXPECT_EQ(companion.received().size(), 2U);
}

TEST_F(ScriptCommand, WarnsOfTheFirstFaultsWhereThereAreMany) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":[]})"));
    std::string script = "[";
    for (int number = 0; number < 50; ++number) {
        script += (number == 0 ? "" : ",") + std::string(R"({"id":")") + std::to_string(number) +
                  R"(","condition_kind":"after_start","condition":{},"action_kind":"","action":{}})";
    }
    const auto outcome = run(companion, {"script", folder.write("many.json", script + "]").string()});
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 21);
    EXPECT_THAT(outcome.err, EndsWith("and 30 more; script --check lists them all\n"));
}

TEST_F(ScriptCommand, AFileThatIsNoScriptIsNotSent) {
    const ScriptedCompanion companion(answering(R"({"unresolved_fixes":[]})"));
    const auto wrong = folder.write("wrong.json", "[{]").string();
    const auto outcome = run(companion, {"script", wrong});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, StartsWith("tarnly-client: " + wrong + ":1:3: no valid JSON: "));
    EXPECT_THAT(outcome.err, EndsWith("tarnly-client: the script " + wrong +
                                      " is not sent, as companions would refuse it\n"));
    EXPECT_EQ(companion.received().size(), 0U);
}

/// Without a companion.
ClientRun check(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"script", "--check"});
    return run(arguments);
}

TEST_F(ScriptCommand, ACheckOfAGoodScriptIsOk) {
    const auto outcome = check({file});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "ok\n");
    EXPECT_EQ(check({file, "--json"}).out, "");
}

TEST_F(ScriptCommand, ACheckPrintsWhatItFinds) {
    const auto faulty = folder.write("faulty.json", unending).string();
    const auto outcome = check({faulty});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.out, faulty + ":1:56: unknown field \"secnds\"; did you mean \"seconds\"?\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ScriptCommand, AWarningSaysThatItIsOne) {
    const auto odd =
        folder
            .write("odd.json", R"([{"id":"a","condition_kind":"after_start","condition":{"seconds":-1},)"
                               R"("action_kind":"speak","action":{}}])")
            .string();
    EXPECT_THAT(check({odd}).out, StartsWith(odd + ":1:66: warning: a time below 0 counts as 0"));
    EXPECT_EQ(check({odd}).exitCode, 1);
    EXPECT_THAT(check({odd, "--json"}).out,
                testing::HasSubstr(R"("line":1,"column":66,"severity":"warning","text":"a time below 0 )"));
}

TEST_F(ScriptCommand, ACheckForProgramsPrintsObjects) {
    const auto faulty = folder.write("faulty.json", "7").string();
    const auto outcome = check({faulty, "--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    const auto json = parseJson(outcome.out);
    EXPECT_EQ(json.at("file").as_string(), faulty);
    EXPECT_EQ(json.at("line"), 1);
    EXPECT_EQ(json.at("column"), 1);
    EXPECT_EQ(json.at("severity"), "error");
    EXPECT_EQ(json.at("text"), "a list of triggers is wanted, or an object {\"triggers\":[…]}");
}

TEST_F(ScriptCommand, ACheckLooksForFixesInADatabase) {
    const auto script = writeScript();
    const auto database = (folder.path() / "nav.db").string();
    makeDatabase(database);
    EXPECT_EQ(check({script}).exitCode, 0);
    const auto outcome = check({script, "--nav-db", database});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, StartsWith(script + ":2:"));
    EXPECT_THAT(outcome.out, testing::HasSubstr("has no fix or navaid \"XYZZY\""));
    EXPECT_EQ(outcome.err, "");
}

TEST_F(ScriptCommand, ACheckTakesTheDatabaseThatTheCompanionHasMade) {
    const auto script = writeScript();
    std::filesystem::create_directory(folder.path() / "Tarnly");
    makeDatabase(folder.path() / "Tarnly" / "navigation.db");
    const auto outcome = check({script});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.out, testing::HasSubstr("has no fix or navaid \"XYZZY\""));
    folder.write("Tarnly/navigation.db", "no database");
    EXPECT_EQ(check({script}).exitCode, 0) << "is left alone";
}

TEST_F(ScriptCommand, ADatabaseThatIsNoneIsWrongUsage) {
    const auto outcome = check({file, "--nav-db", file});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err,
                StartsWith("tarnly-client: --nav-db: " + file + " is no SQLite database; name "));
    std::ostringstream ignored;
    EXPECT_EQ(runClient({"script", file, "--nav-db", file}, ignored, ignored), 2);
}

ClientRun trial(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"script", "--try"});
    std::ostringstream out;
    std::ostringstream err;
    const int exitCode = runClient(arguments, out, err);
    return {exitCode, out.str(), err.str()};
}

/// Two triggers, of which the recording beside it fires the first.
class ScriptTrialCommand : public ScriptCommand {
  public:
    const std::string two =
        folder
            .write("two.json",
                   R"([{"id":"a","condition_kind":"after_start","condition":{"seconds":1},)"
                   R"("action_kind":"speak","action":{}},)"
                   R"({"id":"longer","condition_kind":"reaches_fix","action_kind":"","action":{},)"
                   R"("condition":{"fix":"ridge","within_nm":1}}])")
            .string();
    const std::string log =
        folder
            .write(
                "flight.jsonl",
                "{\"kind\":\"sample\",\"sample\":{\"elapsed_s\":0,\"alt_ft\":9,\"lat\":47.5,\"lon\":8}}\n"
                "{\"kind\":\"sample\",\"sample\":{\"elapsed_s\":1.5,\"alt_ft\":9,\"lat\":47.5,\"lon\":8}}\n")
            .string();
};

TEST_F(ScriptTrialCommand, TellsWhatFiresAndWhatDoesNot) {
    const auto outcome = trial({two, log});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, log +
                               ": 1 fired, 1 did not\n"
                               "  fired   a       at 0:01  47.5 8\n"
                               "  missed  longer  the fix RIDGE was not found\n");
    EXPECT_EQ(outcome.err,
              "tarnly-client: the script names fixes: give --nav-db a navigation database, or they are not "
              "found\n");
}

TEST_F(ScriptTrialCommand, TellsItToProgramsRecordingByRecording) {
    const auto outcome = trial({two, log, log, "--json"});
    const auto line = R"({"file":)" + encodeJson(log) +
                      R"(,"duration_s":1.5,"fired":[{"trigger_id":"a","title":"speak","action_kind":"speak",)"
                      R"("elapsed_s":1.5,"lat":47.5,"lon":8}],"missed":[{"trigger_id":"longer","title":"",)"
                      R"("words":"the fix RIDGE was not found"}]})"
                      "\n";
    EXPECT_EQ(outcome.out, line + line);
}

TEST_F(ScriptTrialCommand, WantsARecordingThatCanBeRead) {
    const auto without = trial({two});
    EXPECT_EQ(without.exitCode, 2);
    EXPECT_THAT(without.err, StartsWith("tarnly-client: --try needs a recording, or several"));
    const auto missing = trial({two, (folder.path() / "nowhere.jsonl").string()});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_THAT(missing.err, testing::HasSubstr("nowhere.jsonl"));
    EXPECT_EQ(missing.out, "");
}

TEST_F(ScriptTrialCommand, RefusesAScriptThatCompanionsWouldRefuse) {
    const auto unknown = folder.write("unknown.json", R"([{"id":"a","condition_kind":"after_landing",)"
                                                      R"("condition":{},"action_kind":"","action":{}}])");
    const auto outcome = trial({unknown.string(), log});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, testing::HasSubstr("after_landing"));
}

TEST_F(ScriptTrialCommand, RecordingsAreForATrialOnly) {
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(runClient({"script", two, log}, out, err), 2);
    EXPECT_THAT(err.str(), testing::HasSubstr("add --try"));
}

} // namespace
} // namespace tarnly::client
