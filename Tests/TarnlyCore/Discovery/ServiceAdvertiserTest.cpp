#include "TarnlyCore/Discovery/ServiceAdvertiser.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "Support/RunTask.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;

class FakePublication final : public Publication {
  public:
    PublicationState state() const override { return present; }
    void onChange(std::function<void()> tell) override { tell_ = std::move(tell); }

    void become(PublicationState state) {
        present = std::move(state);
        tell_();
    }

    PublicationState present{PublicationState::Kind::published, Phrase::verbatim("rig42 (2)")};

  private:
    std::function<void()> tell_;
};

struct ServiceAdvertiserTest : testing::Test {
    boost::asio::io_context io;
    SystemClock clock;
    std::vector<PublishedService> published;
    std::weak_ptr<FakePublication> publication;
    ServiceAdvertiser advertiser{io.get_executor(), clock, [this](PublishedService service) {
                                     published.push_back(std::move(service));
                                     auto token = std::make_shared<FakePublication>();
                                     publication = token;
                                     return token;
                                 }};

    void start(ServiceAdvertiser::Service service, WebSocketListener::ConnectionHandler handler = {}) {
        test::runTask(io, advertiser.start(std::move(service), std::move(handler)));
    }
};

TEST_F(ServiceAdvertiserTest, PublishesThePortWithThreeKeys) {
    start({"rig42", {0}, "xplane", "0.1", true});
    ASSERT_EQ(published.size(), 1U);
    const auto port = advertiser.advertisedPort();
    ASSERT_TRUE(port);
    EXPECT_NE(*port, 0);
    EXPECT_EQ(published[0].port, *port);
    EXPECT_EQ(published[0].name, "rig42");
    EXPECT_EQ(published[0].type, "_tarnly._tcp");
    EXPECT_THAT(published[0].txt,
                ElementsAre(Pair("sim", "xplane"), Pair("ver", "0.1"), Pair("pairing", "required")));
}

TEST_F(ServiceAdvertiserTest, OpenPairingIsTold) {
    start({"rig42", {0}, "xplane", "0.1", false});
    EXPECT_THAT(published.at(0).txt,
                ElementsAre(Pair("sim", "xplane"), Pair("ver", "0.1"), Pair("pairing", "open")));
}

TEST_F(ServiceAdvertiserTest, StopWithdrawsAndMayBeFollowedByAStart) {
    start({"rig42", {0}, "xplane", "0.1", false});
    EXPECT_FALSE(publication.expired());
    advertiser.stop();
    advertiser.stop();
    EXPECT_TRUE(publication.expired());
    EXPECT_FALSE(advertiser.advertisedPort());
    start({"rig42", {0}, "xplane", "0.1", false});
    EXPECT_TRUE(advertiser.advertisedPort());
}

TEST_F(ServiceAdvertiserTest, TellsHowThePublicationStands) {
    EXPECT_EQ(advertiser.publicationState(), std::nullopt);
    start({"rig42", {0}, "xplane", "0.1", false});
    const PublicationState renamed{PublicationState::Kind::published, Phrase::verbatim("rig42 (2)")};
    EXPECT_EQ(advertiser.publicationState(), renamed);
    const PublicationState failed{PublicationState::Kind::noDaemon, Phrase::verbatim("no daemon")};
    publication.lock()->present = failed;
    EXPECT_EQ(advertiser.publicationState(), failed);
    advertiser.stop();
    EXPECT_EQ(advertiser.publicationState(), std::nullopt);
}

TEST_F(ServiceAdvertiserTest, ASecondStartFailsAndLeavesTheFirst) {
    start({"rig42", {0}, "xplane", "0.1", false});
    const auto port = advertiser.advertisedPort();
    try {
        start({"rig43", {0}, "xplane", "0.1", false});
        FAIL() << "started twice";
    } catch (const ServiceAdvertiserError& error) {
        EXPECT_STREQ(error.what(), "alreadyStarted");
    }
    EXPECT_EQ(advertiser.advertisedPort(), port);
    EXPECT_EQ(published.size(), 1U);
}

TEST_F(ServiceAdvertiserTest, APortInUseFailsAndPublishesNothing) {
    start({"rig42", {0}, "xplane", "0.1", false});
    ServiceAdvertiser second(io.get_executor(), clock, nullptr);
    ServiceAdvertiser::Service service{"rig43", {*advertiser.advertisedPort()}, "xplane", "0.1", false};
    EXPECT_THROW(test::runTask(io, second.start(service, {})), NetworkError);
    EXPECT_FALSE(second.advertisedPort());
}

TEST_F(ServiceAdvertiserTest, ListensOnTheFirstPortThatIsFree) {
    start({"rig42", {0}, "xplane", "0.1", false});
    const auto taken = *advertiser.advertisedPort();
    std::vector<PublishedService> publishedBySecond;
    ServiceAdvertiser second(io.get_executor(), clock, [&](PublishedService service) {
        publishedBySecond.push_back(std::move(service));
        return nullptr;
    });
    test::runTask(io, second.start({"rig43", {taken, taken, 0}, "xplane", "0.1", false}, {}));
    EXPECT_NE(second.advertisedPort().value(), taken);
    EXPECT_EQ(publishedBySecond.at(0).port, second.advertisedPort());
}

TEST_F(ServiceAdvertiserTest, MayBePublishedUnderAnotherName) {
    start({"rig42", {0}, "xplane", "0.1", false});
    const auto port = advertiser.advertisedPort();
    auto before = advertiser.takeBack();
    EXPECT_TRUE(before);
    EXPECT_FALSE(advertiser.publicationState());
    before.reset();
    EXPECT_TRUE(publication.expired());
    advertiser.publishAs("rig43", true);
    ASSERT_EQ(published.size(), 2U);
    EXPECT_EQ(published[1].name, "rig43");
    EXPECT_EQ(published[1].port, port);
    EXPECT_THAT(published[1].txt,
                ElementsAre(Pair("sim", "xplane"), Pair("ver", "0.1"), Pair("pairing", "required")));
    EXPECT_EQ(advertiser.advertisedPort(), port);
}

TEST_F(ServiceAdvertiserTest, MayBePublishedOnlyLaterOrNoMore) {
    start({std::nullopt, {0}, "xplane", "0.1", false});
    EXPECT_TRUE(published.empty());
    EXPECT_TRUE(advertiser.advertisedPort());
    advertiser.publishAs("rig42", false);
    EXPECT_EQ(published.size(), 1U);
    EXPECT_TRUE(advertiser.publicationState());
    advertiser.publishAs(std::nullopt, false);
    EXPECT_EQ(published.size(), 1U);
    EXPECT_TRUE(publication.expired());
    advertiser.stop();
    advertiser.publishAs("rig42", false);
    EXPECT_EQ(published.size(), 1U) << "nobody listens";
}

/// A publication that is under way, and time that the test lets pass.
struct PublicationUnderWayTest : testing::Test {
    using Kind = PublicationState::Kind;

    PublicationUnderWayTest() {
        publication->present = {Kind::publishing, {}};
        clock.run(io, advertiser.start({"rig42", {0}, "xplane", "0.1", false}, {}));
    }

    /// Has a task wait, and tells whether it has come to its end.
    std::shared_ptr<bool> isOver(Task<> task) {
        auto over = std::make_shared<bool>(false);
        boost::asio::co_spawn(io, std::move(task), [over](const std::exception_ptr&) { *over = true; });
        clock.settle(io);
        return over;
    }

    boost::asio::io_context io;
    test::VirtualClock clock;
    std::shared_ptr<FakePublication> publication = std::make_shared<FakePublication>();
    ServiceAdvertiser advertiser{io.get_executor(), clock,
                                 [this](const PublishedService&) { return publication; }};
};

TEST_F(PublicationUnderWayTest, IsSettledOnceTheDaemonHasAnswered) {
    const auto settled = isOver(advertiser.publicationSettled(1s));
    clock.advance(io, 900ms);
    EXPECT_FALSE(*settled);
    publication->become({Kind::published, Phrase::verbatim("rig42 (2)")});
    clock.settle(io);
    EXPECT_TRUE(*settled);
    EXPECT_TRUE(*isOver(advertiser.publicationSettled(1s)));
}

TEST_F(PublicationUnderWayTest, AChangeThatSettlesNothingIsWaitedOver) {
    const auto settled = isOver(advertiser.publicationSettled(1s));
    publication->become({Kind::publishing, {}});
    clock.settle(io);
    EXPECT_FALSE(*settled);
    publication->become({Kind::noDaemon, Phrase::verbatim("none")});
    clock.settle(io);
    EXPECT_TRUE(*settled);
}

TEST_F(PublicationUnderWayTest, NobodyWaitsForItLongerThanTheLimit) {
    const auto settled = isOver(advertiser.publicationSettled(1s));
    clock.advance(io, 1s - 1ns);
    EXPECT_FALSE(*settled);
    clock.advance(io, 1ns);
    EXPECT_TRUE(*settled);
}

TEST_F(PublicationUnderWayTest, ItsChangesAreTold) {
    const auto changed = isOver(advertiser.publicationChange());
    clock.advance(io, 24h);
    EXPECT_FALSE(*changed);
    publication->become({Kind::refused, Phrase::verbatim("too many")});
    clock.settle(io);
    EXPECT_TRUE(*changed);
}

TEST_F(PublicationUnderWayTest, WhatIsWithdrawnIsSettled) {
    advertiser.stop();
    EXPECT_TRUE(*isOver(advertiser.publicationSettled(1s)));
}

Task<bool> isClosedAtOnce(boost::asio::io_context& io, Clock& clock, std::uint16_t port) {
    const auto client = openWebSocket(io.get_executor(), clock, {"127.0.0.1", port}, "/");
    const auto message = co_await client->receive();
    co_return !message;
}

TEST_F(ServiceAdvertiserTest, WithoutAHandlerConnectionsAreClosedAtOnce) {
    start({"rig42", {0}, "xplane", "0.1", false});
    EXPECT_TRUE(test::runTask(io, isClosedAtOnce(io, clock, *advertiser.advertisedPort())));
}

} // namespace
} // namespace tarnly
