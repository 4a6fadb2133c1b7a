#include "TarnlyNavdb/CommandLine.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "Support/SimulatorFiles.hpp"

namespace tarnly::navdb {
namespace {

using test::navHeader;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
    int exitCode = 0;
    std::string out;
    std::string err;
};

class NavdbTest : public testing::Test {
  protected:
    NavdbTest() {
        ::setenv("HOME", home.path().c_str(), 1);
        ::unsetenv("XDG_DATA_HOME");
    }

    static Outcome run(const std::vector<std::string>& arguments, bool isTerminal = false) {
        std::ostringstream out;
        std::ostringstream err;
        const int exitCode = runNavdb(arguments, {out, err, isTerminal});
        return {exitCode, out.str(), err.str()};
    }

    Outcome build() const { return run({"build", simulator, "-o", database}); }

    const test::SimulatorFiles files;
    const test::TemporaryFolder home;
    const std::string simulator = files.folder.path().string();
    const std::string database = (home.path() / "nav.db").string();
};

TEST_F(NavdbTest, BuildsADatabaseAndFindsInIt) {
    const auto built = build();
    EXPECT_EQ(built.exitCode, 0);
    EXPECT_EQ(built.out, database + ": 2 fixes, 2 navaids, 0 airports, cycle 2501, build 20250115, from " +
                             simulator + "\n");
    EXPECT_EQ(built.err, "");
    const auto found = run({"find", "tan", "--nav-db", database});
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_EQ(found.out,
              "TAN  NDB  ENRT  ED  52.300000 9.100000  TANDORF NDB\n"
              "TAN  fix  ZZTA  ED  50.000000 8.000000  TAN\n");
    const auto json = run({"find", "TRN", "--json", "--nav-db", database});
    EXPECT_EQ(json.out, R"({"ident":"TRN","kind":"VOR","name":"TARNLY VOR\/DME","area":"ENRT","region":"ED",)"
                        R"("lat":52.2,"lon":9.3})"
                        "\n");
}

TEST_F(NavdbTest, WhatIsNotThereIsAFailureWithWhatMayHaveBeenMeant) {
    build();
    const auto near = run({"find", "TERNA", "--nav-db", database});
    EXPECT_EQ(near.exitCode, 1);
    EXPECT_EQ(near.out, "");
    EXPECT_EQ(near.err, "tarnly-navdb: \"TERNA\" is not there; did you mean TARNA?\n");
    const auto far = run({"find", "NOWHERE", "--json", "--nav-db", database});
    EXPECT_EQ(far.exitCode, 1);
    EXPECT_EQ(far.err, "tarnly-navdb: \"NOWHERE\" is not there\n");
}

TEST_F(NavdbTest, TheSimulatorIsFoundByItsInstallersNote) {
    EXPECT_THAT(run({"build", "-o", database}).err, HasSubstr("x-plane_install_12.txt"));
    EXPECT_EQ(run({"build", "-o", database}).exitCode, 2);
    std::filesystem::create_directories(home.path() / ".x-plane");
    std::filesystem::create_directories(home.path() / "moved away");
    home.write(".x-plane/x-plane_install_12.txt",
               simulator + "/\r\n" + (home.path() / "moved away").string() + "/\n");
    EXPECT_EQ(run({"build", "-o", database}).exitCode, 0);
}

TEST_F(NavdbTest, WarningsAndRowsThatCannotBeReadAreTold) {
    files.put("Custom Data/earth_424.dat", "HDR");
    files.put("Resources/default data/earth_fix.dat", navHeader("1200") + "1 2 A ENRT ED\nrubbish\n");
    const auto built = build();
    EXPECT_EQ(built.exitCode, 0);
    EXPECT_THAT(
        built.err,
        AllOf(HasSubstr("tarnly-navdb: warning: The simulator reads "), HasSubstr("earth_424.dat"),
              HasSubstr("earth_fix.dat: 1 row could not be read and left out, the first in line 5.")));
}

TEST_F(NavdbTest, AFolderThatIsNoSimulatorsIsRefused) {
    const auto outcome = run({"build", home.path().string(), "-o", database});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, AllOf(StartsWith("tarnly-navdb: " + home.path().string()),
                                   HasSubstr("earth_fix.dat is missing. Name the folder")));
    EXPECT_FALSE(std::filesystem::exists(database));
    const auto unwritable = run({"build", simulator, "-o", "/nowhere/nav.db"});
    EXPECT_EQ(unwritable.exitCode, 1);
    EXPECT_THAT(unwritable.err, StartsWith("tarnly-navdb: /nowhere/nav.db cannot be written: "));
}

TEST_F(NavdbTest, ATerminalShowsHowFarItIs) {
    const auto outcome = run({"build", simulator, "-o", database}, true);
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("\rReading and writing: 100 %"), testing::EndsWith("\r\x1b[K")));
}

TEST_F(NavdbTest, WrongUsage) {
    EXPECT_EQ(run({}).exitCode, 2);
    EXPECT_EQ(run({"build", simulator}).exitCode, 2) << "--output is wanted";
    EXPECT_EQ(run({"find"}).exitCode, 2);
    EXPECT_THAT(run({"find", "X", "--nav-db", "/nowhere"}).err,
                StartsWith("tarnly-navdb: --nav-db: /nowhere does not"));
    EXPECT_THAT(run({"find", "X"}).err, HasSubstr("has not made a database"));
    EXPECT_EQ(run({"find", "X"}).exitCode, 2);
    EXPECT_EQ(run({"--version"}).out, "tarnly-navdb " TARNLY_VERSION "\n");
    EXPECT_EQ(run({"--help"}).exitCode, 0);
}

} // namespace
} // namespace tarnly::navdb
