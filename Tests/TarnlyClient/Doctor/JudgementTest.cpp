#include "TarnlyClient/Doctor/Judgement.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnly::client {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Kind = SimulatorStage::Kind;

testing::Matcher<Finding> isFine() {
    return AllOf(Field(&Finding::ok, std::optional(true)), Field(&Finding::cure, IsEmpty()));
}

/// With a cure that names `what`.
testing::Matcher<Finding> isAmiss(const char* what) {
    return AllOf(Field(&Finding::ok, std::optional(false)), Field(&Finding::text, Not(IsEmpty())),
                 Field(&Finding::cure, HasSubstr(what)));
}

testing::Matcher<Finding> isUnknown() { return Field(&Finding::ok, std::optional<bool>()); }

TEST(Finding, IsALineWithAMarkAndItsCureBelow) {
    EXPECT_THAT(findingLines(Finding::fine("disk", "Roomy.")), ElementsAre("ok  disk: Roomy."));
    EXPECT_THAT(findingLines(Finding::amiss("disk", "Full.", "Make room.")),
                ElementsAre("!!  disk: Full.", "      Make room."));
    EXPECT_THAT(findingLines(Finding::unknown("disk", "Far away.")), ElementsAre("--  disk: Far away."));
}

TEST(Finding, HasItsJson) {
    EXPECT_EQ(encodeJson(Finding::amiss("disk", "Full.", "Make room.")),
              R"({"step":"disk","ok":false,"text":"Full.","cure":"Make room."})");
    EXPECT_EQ(encodeJson(Finding::unknown("disk", "Far.")), R"({"step":"disk","text":"Far.","cure":""})");
}

TEST(Judgement, WarningsAreTheirOwnCures) {
    CompanionStatus status;
    EXPECT_THAT(judgeWarnings(status), isFine());
    status.warn(Phrase::verbatim("The settings could not be read; mend them."));
    EXPECT_THAT(judgeWarnings(status), isAmiss("mend them"));
}

struct PublicationJudgementTest : testing::Test {
    PublicationJudgementTest() {
        status.port = 28086;
        status.published = PublicationStatus{"published", "rig42", {}};
    }

    static FoundService service(const char* name, std::uint16_t port) {
        FoundService found;
        found.name = name;
        found.port = port;
        return found;
    }

    CompanionStatus status;
};

TEST_F(PublicationJudgementTest, IsFineWhereItIsFound) {
    EXPECT_THAT(judgePublication(status, {{service("else", 1), service("rig42", 28086)}}, ""), isFine());
}

TEST_F(PublicationJudgementTest, AnothersNameOrPortIsNotIt) {
    EXPECT_THAT(judgePublication(status, {{service("rig42", 1)}}, ""), isAmiss("UDP port 5353"));
    EXPECT_THAT(judgePublication(status, {{service("rig43", 28086)}}, ""), isAmiss("UDP port 5353"));
}

TEST_F(PublicationJudgementTest, WithoutADaemonNobodyFindsIt) {
    EXPECT_THAT(judgePublication(status, {}, "no daemon"), isAmiss("avahi-daemon"));
    status.published = PublicationStatus{"not_published", {}, Phrase::verbatim("no daemon")};
    EXPECT_THAT(judgePublication(status, {}, "no daemon"), isAmiss("enter the address"));
}

TEST_F(PublicationJudgementTest, WhatWasToldNotToBePublishedIsNoFault) {
    status.published = PublicationStatus{"off", {}, {}};
    EXPECT_THAT(judgePublication(status, {}, ""), isUnknown());
}

TEST(Judgement, APageIsOursOrNot) {
    EXPECT_THAT(judgePage({"10.0.0.1:1", 200U, true, ""}), isFine());
    EXPECT_THAT(judgePage({"10.0.0.1:1", 200U, false, ""}), isAmiss("Another program"));
    EXPECT_THAT(judgePage({"10.0.0.1:1", 503U, false, ""}), isAmiss("--max-clients"));
    EXPECT_THAT(judgePage({"10.0.0.1:1", {}, false, "Connection refused"}), isAmiss("firewall"));
    EXPECT_THAT(judgeNoAddress(), isAmiss("network"));
}

TEST(Judgement, PairingIsFineEitherWay) {
    CompanionStatus status;
    EXPECT_THAT(judgePairing(status), isUnknown());
    for (const char* pairing : {"open", "password"}) {
        status.pairing = pairing;
        EXPECT_THAT(judgePairing(status), isFine());
    }
}

TEST(Judgement, ASimulatorIsFineWithAFlight) {
    const auto judge = [](Kind kind) {
        SimulatorProbe probe;
        probe.place = "127.0.0.1:8086";
        probe.version = "12.1.4";
        probe.stage.kind = kind;
        return judgeSimulator(probe);
    };
    EXPECT_THAT(judge(Kind::flightLoaded), isFine());
    EXPECT_EQ(judge(Kind::flightLoaded).text, "Flight loaded (127.0.0.1:8086, version 12.1.4).");
    EXPECT_THAT(judge(Kind::mainMenu), isAmiss("Load a flight."));
    EXPECT_THAT(judge(Kind::notRunning), isAmiss("Start X-Plane"));
    EXPECT_THAT(judge(Kind::refusing), isAmiss("Allow incoming traffic"));
    EXPECT_THAT(judge(Kind::tooOld), isAmiss("12.1.4 or later"));
    EXPECT_THAT(judge(Kind::silent), isAmiss("restart it"));
}

TEST(Judgement, ValuesNeedAPassword) {
    EXPECT_THAT(judgeValues({true, true, ""}, false), isFine());
    EXPECT_THAT(judgeValues({true, false, "timeout"}, true), isAmiss("simulator"));
    EXPECT_THAT(judgeValues({false, false, "incorrect password"}, false), isUnknown());
    EXPECT_THAT(judgeValues({false, false, "incorrect password"}, true), isAmiss("--password-file"));
}

TEST(Judgement, WhatIsNotConfiguredIsNoFault) {
    EXPECT_THAT(judgeSituations({}), isUnknown());
    EXPECT_THAT(judgeNavDatabase({}, {}), isUnknown());
    SourcesStatus sources;
    sources.isNavDatabaseInTheMaking = true;
    EXPECT_EQ(judgeNavDatabase({}, sources).text,
              "The companion makes one of the simulator's data just now.");
}

TEST(Judgement, FilesAreUsableOrNot) {
    const FolderProbe fine{"/x", true, "", 3, std::uint64_t{1} << 40U};
    const FolderProbe failing{"/x", true, "Permission denied", 0, 0};
    const FolderProbe hanging{"/x", false, "", 0, 0};
    EXPECT_EQ(judgeSituations(fine).text, "/x has 3 saved flights.");
    EXPECT_THAT(judgeSituations(failing), isAmiss("--situations"));
    SourcesStatus sources;
    EXPECT_EQ(judgeNavDatabase(fine, sources).text, "/x shows no fault.");
    sources.navCycle = "2501";
    EXPECT_EQ(judgeNavDatabase(fine, sources).text, "/x, cycle 2501, shows no fault.");
    EXPECT_THAT(judgeNavDatabase(fine, sources), isFine());
    const FolderProbe noDatabase{"/x", true, "/x is a folder; name an SQLite file", 0, 0};
    EXPECT_THAT(judgeNavDatabase(noDatabase, {}), isAmiss("Name an SQLite file. The settings"));
    EXPECT_EQ(judgeNavDatabase(noDatabase, {}).text, "/x is a folder.");
    EXPECT_THAT(judgeDisk(fine), isFine());
    EXPECT_THAT(judgeDisk(failing), isAmiss("writable"));
    EXPECT_THAT(judgeSettings(fine), isFine());
    EXPECT_THAT(judgeSettings(failing), isAmiss("no password is asked for"));
    EXPECT_THAT(judgeSituations(hanging), isAmiss("mount"));
    EXPECT_THAT(judgeNavDatabase(hanging, {}), isAmiss("mount"));
    EXPECT_THAT(judgeDisk(hanging), isAmiss("mount"));
    EXPECT_THAT(judgeSettings(hanging), isAmiss("mount"));
}

TEST(Judgement, ADiskNeedsRoom) {
    constexpr std::uint64_t mebibyte = 1024 * 1024;
    EXPECT_THAT(judgeDisk({"/x", true, "", 0, 199 * mebibyte}), isAmiss("Make room"));
    EXPECT_THAT(judgeDisk({"/x", true, "", 0, 200 * mebibyte}), isFine());
}

} // namespace
} // namespace tarnly::client
