#include "TarnlyApp/CompanionOptions.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

std::variant<CompanionOptions, EarlyExit> parse(CompanionProgram program,
                                                const std::vector<std::string>& arguments) {
    std::vector<const char*> words{"program"};
    for (const auto& argument : arguments)
        words.push_back(argument.c_str());
    return parseOptions(program, static_cast<int>(words.size()), words.data());
}

CompanionOptions options(const std::vector<std::string>& arguments,
                         CompanionProgram program = CompanionProgram::tarnlyd) {
    return std::get<CompanionOptions>(parse(program, arguments));
}

EarlyExit exitOf(const std::vector<std::string>& arguments,
                 CompanionProgram program = CompanionProgram::tarnlyd) {
    return std::get<EarlyExit>(parse(program, arguments));
}

TEST(CompanionOptions, HaveDefaults) {
    const auto defaults = options({});
    EXPECT_FALSE(defaults.simulatorHost);
    EXPECT_FALSE(defaults.simulatorPort);
    EXPECT_FALSE(defaults.port);
    EXPECT_FALSE(defaults.name);
    EXPECT_FALSE(defaults.dataFolder);
    EXPECT_FALSE(defaults.navigationDatabase);
    EXPECT_FALSE(defaults.situationsFolder);
    EXPECT_EQ(defaults.advertises, std::nullopt);
    EXPECT_FALSE(defaults.statusFile);
    EXPECT_FALSE(defaults.asksForStatus);
}

TEST(CompanionOptions, AreAllTaken) {
    const auto given = options({"--sim-host", "rig", "--sim-port", "8087", "--port", "41234", "--name",
                                "rig 42", "--data-dir", "/d", "--nav-db", "/n.db", "--situations", "/s",
                                "--no-advertise", "--status-file", "/s.json"});
    EXPECT_EQ(given.simulatorHost, "rig");
    EXPECT_EQ(given.simulatorPort, 8087);
    EXPECT_EQ(given.port, 41234);
    EXPECT_EQ(given.name, "rig 42");
    EXPECT_EQ(given.dataFolder, "/d");
    EXPECT_EQ(given.navigationDatabase, "/n.db");
    EXPECT_EQ(given.situationsFolder, "/s");
    EXPECT_EQ(given.advertises, false);
    EXPECT_EQ(given.statusFile, "/s.json");
}

TEST(CompanionOptions, PublishingIsSaidBothWays) {
    EXPECT_EQ(options({"--advertise"}).advertises, true);
    EXPECT_EQ(options({"--no-advertise"}).advertises, false);
}

TEST(CompanionOptions, TheLessonPageMayBeTurnedOff) {
    EXPECT_TRUE(options({}).hasLessonPage);
    EXPECT_FALSE(options({"--no-page"}).hasLessonPage);
}

TEST(CompanionOptions, HelpAndVersionEndWell) {
    EXPECT_EQ(exitOf({"--help"}).status, 0);
    EXPECT_NE(exitOf({"--help"}).text.find("--no-advertise"), std::string::npos);
    EXPECT_EQ(exitOf({"--version"}).status, 0);
    EXPECT_EQ(exitOf({"--version"}).text, "tarnlyd " TARNLY_VERSION "\n");
    EXPECT_EQ(exitOf({"--version"}, CompanionProgram::tarnly).text, "tarnly " TARNLY_VERSION "\n");
}

TEST(CompanionOptions, WrongUsageEndsWithOneLine) {
    const std::vector<std::vector<std::string>> wrong{{"--bogus"},
                                                      {"argument"},
                                                      {"--port", "65536"},
                                                      {"--port", "-1"},
                                                      {"--port", "x"},
                                                      {"--port"},
                                                      {"--sim-port", "0"},
                                                      {"--sim-host", ""},
                                                      {"--sim-host", "[::1]"},
                                                      {"--sim-host", "a b"},
                                                      {"--name", ""},
                                                      {"--no-advertise=x"},
                                                      {"--background"},
                                                      {"--advertise", "--no-advertise"}};
    for (const auto& arguments : wrong) {
        const auto exit = exitOf(arguments);
        EXPECT_EQ(exit.status, 2) << arguments[0];
        EXPECT_EQ(std::count(exit.text.begin(), exit.text.end(), '\n'), 1) << exit.text;
        EXPECT_EQ(exit.text.substr(0, 9), "tarnlyd: ");
    }
}

TEST(CompanionOptions, TheDesktopApplicationTakesTheSameAndOneMore) {
    const auto given = options({"--port", "41234", "--background"}, CompanionProgram::tarnly);
    EXPECT_EQ(given.port, 41234);
    EXPECT_TRUE(given.startsInBackground);
    EXPECT_FALSE(options({}, CompanionProgram::tarnly).startsInBackground);
    EXPECT_EQ(exitOf({"--bogus"}, CompanionProgram::tarnly).text.substr(0, 8), "tarnly: ");
}

TEST(CompanionOptions, ToAskForTheStatusWhereNoneRunsEndsWithTheCure) {
    const test::TemporaryFolder folder;
    const auto text = folder.path().string();
    const std::array words{"program", "--status", "--data-dir", text.c_str()};
    const auto prepared = prepareRun(CompanionProgram::tarnlyd, static_cast<int>(words.size()), words.data());
    const auto exit = std::get<EarlyExit>(prepared);
    EXPECT_EQ(exit.status, 1);
    EXPECT_EQ(exit.text, "tarnlyd: no companion runs on the data folder " + text +
                             "; start tarnly or tarnlyd, or name another folder by --data-dir; "
                             "why tarnlyd does not stay is told by journalctl --user -u tarnlyd\n");
}

TEST(CompanionOptions, ThePortIsAUsualOneUnlessOneIsWanted) {
    const auto usual = portsToTry(options({}).port);
    EXPECT_EQ(usual.size(), 11U);
    EXPECT_EQ(usual.front(), 28086);
    EXPECT_EQ(usual.at(9), 28095);
    EXPECT_EQ(usual.back(), 0) << "any, at last";
    EXPECT_EQ(portsToTry(options({"--port", "0"}).port), std::vector<std::uint16_t>{0});
    EXPECT_EQ(portsToTry(options({"--port", "41234"}).port), std::vector<std::uint16_t>{41234});
}

} // namespace
} // namespace tarnly
