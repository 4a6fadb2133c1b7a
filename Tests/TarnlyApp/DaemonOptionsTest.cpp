#include "TarnlyApp/DaemonOptions.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace tarnly {
namespace {

std::variant<DaemonOptions, EarlyExit> parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tarnlyd");
    return parseDaemonOptions(static_cast<int>(arguments.size()), arguments.data());
}

DaemonOptions options(std::vector<const char*> arguments) {
    return std::get<DaemonOptions>(parse(std::move(arguments)));
}
EarlyExit exitOf(std::vector<const char*> arguments) {
    return std::get<EarlyExit>(parse(std::move(arguments)));
}

TEST(DaemonOptions, HaveDefaults) {
    const auto defaults = options({});
    EXPECT_EQ(defaults.simulator, (Endpoint{"127.0.0.1", 8086}));
    EXPECT_EQ(defaults.port, 0);
    EXPECT_FALSE(defaults.name);
    EXPECT_FALSE(defaults.dataFolder);
    EXPECT_FALSE(defaults.navigationDatabase);
    EXPECT_FALSE(defaults.situationsFolder);
    EXPECT_TRUE(defaults.advertises);
}

TEST(DaemonOptions, AreAllTaken) {
    const auto given =
        options({"--sim-host", "rig", "--sim-port", "8087", "--port", "41234", "--name", "rig 42",
                 "--data-dir", "/d", "--nav-db", "/n.db", "--situations", "/s", "--no-advertise"});
    EXPECT_EQ(given.simulator, (Endpoint{"rig", 8087}));
    EXPECT_EQ(given.port, 41234);
    EXPECT_EQ(given.name, "rig 42");
    EXPECT_EQ(given.dataFolder, "/d");
    EXPECT_EQ(given.navigationDatabase, "/n.db");
    EXPECT_EQ(given.situationsFolder, "/s");
    EXPECT_FALSE(given.advertises);
}

TEST(DaemonOptions, HelpAndVersionEndWell) {
    EXPECT_EQ(exitOf({"--help"}).status, 0);
    EXPECT_NE(exitOf({"--help"}).text.find("--no-advertise"), std::string::npos);
    EXPECT_EQ(exitOf({"--version"}).status, 0);
    EXPECT_EQ(exitOf({"--version"}).text, "tarnlyd " TARNLY_VERSION "\n");
}

TEST(DaemonOptions, WrongUsageEndsWithOneLine) {
    const std::vector<std::vector<const char*>> wrong{
        {"--bogus"},           {"argument"},       {"--port", "65536"},
        {"--port", "-1"},      {"--port", "x"},    {"--port"},
        {"--sim-port", "0"},   {"--sim-host", ""}, {"--sim-host", "[::1]"},
        {"--sim-host", "a b"}, {"--name", ""},     {"--no-advertise=x"}};
    for (const auto& arguments : wrong) {
        const auto exit = exitOf(arguments);
        EXPECT_EQ(exit.status, 2) << arguments[0];
        EXPECT_EQ(std::count(exit.text.begin(), exit.text.end(), '\n'), 1) << exit.text;
        EXPECT_EQ(exit.text.substr(0, 9), "tarnlyd: ");
    }
}

} // namespace
} // namespace tarnly
