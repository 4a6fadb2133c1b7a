#include "TarnlyCore/Protocol/ReachTest.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnly {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Outcome = ReachFinding::Outcome;

VisitStatus visit(std::int64_t count, const char* from) {
    return {count, "2026-11-22T15:00:0" + std::to_string(count) + "Z", from};
}

struct ReachTestTest : testing::Test {
    CompanionStatus status;
};

TEST_F(ReachTestTest, WhoWasThereBeforeDoesNotCount) {
    status.visitors = VisitorsStatus{visit(1, "192.0.2.7"), visit(2, "192.0.2.8"), visit(3, "192.0.2.9")};
    const ReachTest test(status);
    EXPECT_EQ(test.look(status).outcome, Outcome::nobodyYet);
    EXPECT_EQ(test.look(CompanionStatus()).outcome, Outcome::nobodyYet);
}

TEST_F(ReachTestTest, WhoOpensThePageHasArrived) {
    const ReachTest test(status);
    status.visitors = VisitorsStatus{visit(1, "192.0.2.7"), {}, {}};
    const auto found = test.look(status);
    EXPECT_EQ(found.outcome, Outcome::fine);
    EXPECT_EQ(found.text, "192.0.2.7 has reached this computer, and was shown the page.");
    EXPECT_TRUE(found.cure.empty());
}

TEST_F(ReachTestTest, WhoIsRefusedIsToldWhatToDo) {
    status.visitors = VisitorsStatus{{}, visit(1, "192.0.2.7"), {}};
    const ReachTest test(status);
    status.visitors = VisitorsStatus{visit(4, "192.0.2.7"), visit(2, "192.0.2.7"), {}};
    const auto found = test.look(status);
    EXPECT_EQ(found.outcome, Outcome::refused);
    EXPECT_THAT(found.cure, HasSubstr("password"));
}

TEST_F(ReachTestTest, WhoPairsIsFineWhateverWasBefore) {
    const ReachTest test(status);
    status.visitors = VisitorsStatus{visit(1, "192.0.2.7"), visit(2, "192.0.2.7"), visit(3, "192.0.2.7")};
    EXPECT_EQ(test.look(status).text, "192.0.2.7 has reached this computer, and has paired.");
}

TEST_F(ReachTestTest, ACompanionThatWasStartedAnewCountsAnew) {
    status.visitors = VisitorsStatus{visit(5, "192.0.2.7"), {}, {}};
    const ReachTest test(status);
    status.visitors = VisitorsStatus{visit(1, "192.0.2.7"), {}, {}};
    EXPECT_EQ(test.look(status).outcome, Outcome::fine);
}

TEST_F(ReachTestTest, WhereNobodyArrivesThereAreTwoCauses) {
    status.port = 28086;
    const auto found = ReachTest::neverArrived(status);
    EXPECT_EQ(found.outcome, Outcome::nobodyYet);
    EXPECT_THAT(found.cure, AllOf(HasSubstr("firewall"), HasSubstr("TCP port 28086"), HasSubstr("Wi-Fi")));
    EXPECT_THAT(ReachTest::neverArrived(CompanionStatus()).cure, Not(HasSubstr("port 0")));
}

TEST_F(ReachTestTest, PagesHaveTheAddressesOfThePort) {
    status.addresses = {"ws://192.168.1.20:41234", "ws://[2001:db8::1]:41234"};
    EXPECT_THAT(ReachTest::pages(status),
                ElementsAre("http://192.168.1.20:41234/", "http://[2001:db8::1]:41234/"));
}

} // namespace
} // namespace tarnly
