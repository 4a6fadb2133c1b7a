#include "TarnlyClient/Commands/CommandLine.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "TarnlyClient/Commands/ClientRun.hpp"

namespace tarnly::client {
namespace {

using test::run;
using testing::HasSubstr;
using testing::StartsWith;

using Arguments = std::vector<std::string>;

void expectWrongUsage(const Arguments& arguments) {
    const auto outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 2) << testing::PrintToString(arguments) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, StartsWith("tarnly-client: "));
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
}

TEST(CommandLine, HelpListsTheSubcommands) {
    const auto outcome = run({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "");
    for (const auto* name : {"discover", "info", "get", "watch", "set", "run", "move", "attitude", "flights",
                             "load", "script", "record", "catch-up", "send"}) {
        EXPECT_THAT(outcome.out, HasSubstr(std::string("\n  ") + name + " "));
    }
}

TEST(CommandLine, ASubcommandHasHelpOfItsOwn) {
    const auto outcome = run({"watch", "--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("--count"));
}

TEST(CommandLine, PositionalsHaveNamesThatNewerLibrariesTake) {
    // Others end the program as soon as it starts.
    const std::regex subcommand(R"(\n  ([a-z-]+) +\S)");
    const std::regex positional(R"(Usage: tarnly-client [^={:\n]+\n)");
    const auto all = run({"--help"}).out;
    const auto listed = all.substr(all.find("\nSubcommands:"));
    for (std::sregex_iterator found(listed.begin(), listed.end(), subcommand), end; found != end; ++found) {
        const auto help = run({(*found)[1], "--help"}).out;
        EXPECT_TRUE(std::regex_search(help, positional)) << help;
    }
}

TEST(CommandLine, Version) {
    const auto outcome = run({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "tarnly-client " TARNLY_VERSION "\n");
}

TEST(CommandLine, WithoutSubcommandOrWithTwoIsWrongUsage) {
    expectWrongUsage({});
    expectWrongUsage({"--json"});
    expectWrongUsage({"nonsense"});
    expectWrongUsage({"info", "info"});
}

TEST(CommandLine, TheComplaintNamesWhatIsNotExpected) {
    EXPECT_EQ(run({"nonsense"}).err,
              "tarnly-client: \"nonsense\" is not expected; --help lists the subcommands\n");
    EXPECT_EQ(run({"--json"}).err, "tarnly-client: A subcommand is required\n");
    EXPECT_EQ(run({"info", "more"}).err, "tarnly-client: The following argument was not expected: more\n");
    EXPECT_EQ(run({"watch", "a", "--count", "0"}).err,
              "tarnly-client: --count: Value 0 not in range 1 to 1000000000\n");
}

TEST(CommandLine, UnknownOptionsAreWrongUsage) {
    expectWrongUsage({"--nonsense", "info"});
    expectWrongUsage({"info", "--nonsense"});
    expectWrongUsage({"info", "-x"});
    expectWrongUsage({"info", "more"});
    // The value of a password is nothing for a command line, which all on the computer can read.
    expectWrongUsage({"--password", "secret", "info"});
}

TEST(CommandLine, HostAndPortBelongTogether) {
    expectWrongUsage({"--host", "127.0.0.1", "info"});
    expectWrongUsage({"--port", "1", "info"});
    expectWrongUsage({"--host", "127.0.0.1", "--port", "1", "--instance", "rig", "info"});
}

TEST(CommandLine, PortsAndTimesThatAreNoneAreWrongUsage) {
    for (const auto* port : {"0", "65536", "-1", "x", "70000000000"}) {
        expectWrongUsage({"--host", "127.0.0.1", "--port", port, "info"});
    }
    for (const auto* seconds : {"0", "-1", "x", "nan", "inf", "1e99"}) {
        expectWrongUsage({"--timeout", seconds, "info"});
        expectWrongUsage({"watch", "a", "--seconds", seconds});
    }
    for (const auto* count : {"0", "-1", "x", "1.5"})
        expectWrongUsage({"watch", "a", "--count", count});
}

TEST(CommandLine, MissingOrBadParametersAreWrongUsage) {
    for (const auto* command :
         {"get", "watch", "set", "run", "move", "attitude", "load", "script", "record", "send"}) {
        expectWrongUsage({command});
    }
    expectWrongUsage({"move", "1"});
    expectWrongUsage({"move", "1", "2", "3"});
    expectWrongUsage({"move", "1", "nan"});
    expectWrongUsage({"move", "inf", "1"});
    expectWrongUsage({"attitude", "1", "2", "3"});
    expectWrongUsage({"attitude", "1", "2", "3", "1e999"});
    expectWrongUsage({"set", "a=1", "b"});
    expectWrongUsage({"set", "a[x]=1"});
    expectWrongUsage({"send", "nonsense"});
    expectWrongUsage({"get", "caf\xE9"});
    expectWrongUsage({"load", "caf\xE9"});
    expectWrongUsage({"flights", "more"});
    expectWrongUsage({"record", "pause"});
    expectWrongUsage({"record", "start", "stop"});
    expectWrongUsage({"catch-up", "--since", "yesterday"});
    expectWrongUsage({"catch-up", "--since", "inf"});
    expectWrongUsage({"script", "/nowhere/lesson.json"});
}

TEST(CommandLine, NumbersOutOfRangeAreRefusedWithTheRange) {
    EXPECT_EQ(run({"move", "91", "200"}).err,
              "tarnly-client: LAT: 91 is out of range: degrees from -90 to 90 are wanted\n");
    EXPECT_EQ(run({"move", "90", "-180.5"}).err,
              "tarnly-client: LON: -180.5 is out of range: degrees from -180 to 180 are wanted\n");
    EXPECT_EQ(run({"attitude", "1", "2", "-1", "0"}).err,
              "tarnly-client: IAS: -1 is out of range: knots from 0 to 2000 are wanted\n");
    expectWrongUsage({"attitude", "91", "0", "100", "0"});
    expectWrongUsage({"attitude", "0", "-181", "100", "0"});
    expectWrongUsage({"attitude", "0", "0", "2001", "0"});
    expectWrongUsage({"attitude", "0", "0", "100", "1.1"});
    expectWrongUsage({"attitude", "0", "0", "100", "60"});
}

TEST(CommandLine, NamesThatAreEmptyOrTooLongAreRefused) {
    EXPECT_EQ(run({"run", ""}).err, "tarnly-client: COMMAND: a text that is not empty is wanted\n");
    for (const auto* command : {"get", "watch", "load", "run", "script"})
        expectWrongUsage({command, ""});
    expectWrongUsage({"--instance", "", "info"});
    expectWrongUsage({"--host", "", "--port", "1", "info"});
    expectWrongUsage({"--host", "[::1]", "--port", "1", "info"});
    expectWrongUsage({"status", "--data-dir", ""});
    const std::string tooLong(1025, 'a');
    for (const auto* command : {"get", "watch", "run"})
        expectWrongUsage({command, tooLong});
    expectWrongUsage({"set", tooLong + "=1"});
}

TEST(CommandLine, AWatchIsOfDatarefsOrOfTheRecording) {
    expectWrongUsage({"watch", "--recording", "a"});
    EXPECT_EQ(run({"watch"}).err, "tarnly-client: watch what? NAME... or --recording is required\n");
}

TEST(CommandLine, APasswordFileThatIsMissingIsWrongUsage) {
    expectWrongUsage({"--host", "127.0.0.1", "--port", "1", "--password-file", "/nowhere/password", "info"});
}

TEST(CommandLine, DiscoverTakesNoAddress) {
    expectWrongUsage({"--host", "127.0.0.1", "--port", "1", "discover"});
    expectWrongUsage({"--instance", "rig", "discover"});
}

} // namespace
} // namespace tarnly::client
