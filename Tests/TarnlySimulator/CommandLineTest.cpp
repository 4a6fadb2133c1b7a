#include "TarnlySimulator/CommandLine.hpp"

#include <gmock/gmock.h>

#include <algorithm>

namespace tarnly::simulator {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

SimulatorOptions accepted(std::vector<std::string> arguments) {
    return std::get<SimulatorOptions>(parseCommandLine(std::move(arguments)));
}

EarlyEnd ended(std::vector<std::string> arguments) {
    return std::get<EarlyEnd>(parseCommandLine(std::move(arguments)));
}

TEST(CommandLine, WithoutArgumentsItIsTheRealThing) {
    const auto options = accepted({});
    EXPECT_EQ(options.port, 8086);
    EXPECT_EQ(options.udpPort, 49000);
    EXPECT_EQ(options.start, FlightPhase::runway);
    EXPECT_EQ(options.speed, 1);
    EXPECT_EQ(options.idSeed, std::nullopt);
    EXPECT_EQ(options.lateDatarefsAfter, std::nullopt);
    EXPECT_EQ(options.dropAfter, std::nullopt);
    for (const QuirkSwitch& quirk : quirkSwitches())
        EXPECT_EQ(options.quirks.*quirk.on, std::string(quirk.name) == "duration-required") << quirk.name;
}

TEST(CommandLine, TakesPortsAndFlight) {
    const auto options =
        accepted({"--port", "0", "--udp-port=65535", "--seed", "7", "--id-seed", "9", "--start", "final",
                  "--speed", "2.5", "--datarefs", "120000", "--commands", "3170"});
    EXPECT_EQ(options.port, 0);
    EXPECT_EQ(options.udpPort, 65535);
    EXPECT_EQ(options.seed, 7u);
    EXPECT_EQ(options.idSeed, 9u);
    EXPECT_EQ(options.start, FlightPhase::finalApproach);
    EXPECT_EQ(options.speed, 2.5);
    EXPECT_EQ(options.datarefs, 120000u);
    EXPECT_EQ(options.commands, 3170u);
}

TEST(CommandLine, EveryQuirkHasItsOption) {
    const auto options = accepted({"--main-menu",
                                   "--traffic-disabled",
                                   "--no-duration",
                                   "--late-datarefs",
                                   "1.5",
                                   "--null-entries",
                                   "--non-finite",
                                   "--silent",
                                   "--stuck",
                                   "--result-per-dataref",
                                   "--slow",
                                   "750",
                                   "--drop",
                                   "20",
                                   "--traffic-disabled-plain",
                                   "--too-old",
                                   "--handshake-refused",
                                   "--handshake-late",
                                   "11000",
                                   "--awkward-catalogue",
                                   "--values-stop",
                                   "--mid-message",
                                   "--pings-unanswered",
                                   "--idle-close",
                                   "5000"});
    const Quirks& quirks = options.quirks;
    EXPECT_TRUE(quirks.mainMenu && quirks.trafficDisabled && quirks.nullEntries && quirks.nonFinite);
    EXPECT_TRUE(quirks.silent && quirks.stuck && quirks.resultPerDataref && quirks.slow);
    EXPECT_TRUE(quirks.trafficDisabledPlain && quirks.tooOld && quirks.handshakeRefused);
    EXPECT_TRUE(quirks.handshakeLate && quirks.awkwardCatalogue && quirks.valuesStop && quirks.midMessage);
    EXPECT_TRUE(quirks.pingsUnanswered && quirks.idleClose);
    EXPECT_EQ(quirks.handshakeLateBy, 11s);
    EXPECT_EQ(quirks.idleCloseAfter, 5s);
    EXPECT_FALSE(quirks.durationRequired);
    EXPECT_EQ(quirks.slowBy, 750ms);
    EXPECT_EQ(options.lateDatarefsAfter, 1500ms);
    EXPECT_EQ(options.dropAfter, 20s);
}

TEST(CommandLine, TakesTheFormsOfTheCatalogue) {
    EXPECT_FALSE(accepted({}).leverLists || accepted({}).noFlapRatio || accepted({}).takesOrders);
    const auto options =
        accepted({"--lever-lists", "--no-flap-ratio", "--sim-version", "12.1.4", "--control", "stdin"});
    EXPECT_TRUE(options.leverLists && options.noFlapRatio && options.takesOrders);
    EXPECT_EQ(options.version, "12.1.4");
}

class WrongUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(WrongUsage, EndsWithOneLineAndStatusTwo) {
    const auto end = ended(GetParam());
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(std::ranges::count(end.text, '\n'), 1);
    EXPECT_TRUE(end.text.starts_with("tarnly-sim: ") && end.text.ends_with('\n')) << end.text;
    EXPECT_LT(end.text.size(), 200u) << end.text;
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, WrongUsage,
    testing::Values(std::vector<std::string>{"--bogus"}, std::vector<std::string>{"extra"},
                    std::vector<std::string>{"--port"}, std::vector<std::string>{"--port", "65536"},
                    std::vector<std::string>{"--port", "x"}, std::vector<std::string>{"--port", "-1"},
                    std::vector<std::string>{"--seed", "-1"}, std::vector<std::string>{"--id-seed", "x"},
                    std::vector<std::string>{"--speed", "0"}, std::vector<std::string>{"--speed", "nan"},
                    std::vector<std::string>{"--start", "nowhere"}, std::vector<std::string>{"--start", "2"},
                    std::vector<std::string>{"--slow"}, std::vector<std::string>{"--control", "tape"},
                    std::vector<std::string>{"--idle-close", "-1"}, std::vector<std::string>{"--drop", "inf"},
                    std::vector<std::string>{"--late-datarefs", "-1"}));

TEST(CommandLine, HelpAndVersionEndWell) {
    const auto help = ended({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.text, HasSubstr("--udp-port PORT"));
    EXPECT_THAT(help.text, HasSubstr("/control"));
    EXPECT_THAT(help.text, HasSubstr("restart [swapped]"));
    const auto version = ended({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.text, "tarnly-sim " TARNLY_VERSION "\n");
}

} // namespace
} // namespace tarnly::simulator
