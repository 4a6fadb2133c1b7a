#include "TarnlyApp/Notices.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <chrono>

#include "Support/VirtualClock.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

struct NoticesTest : testing::Test {
    boost::asio::io_context io;
    test::VirtualClock clock;
    Visitors book{[] { return std::chrono::sys_seconds(100s); }};
    CompanionStatus status;
    Notices notices{clock};

    static PeerNetwork network(const std::string& address) {
        return PeerNetwork(boost::asio::ip::make_address(address));
    }

    void attempt(const std::string& address, bool isAccepted) {
        book.note(isAccepted ? Visitors::Kind::paired : Visitors::Kind::refused, network(address));
        status.visitors = VisitorsStatus::of(book);
    }

    void pair(const std::string& address) {
        attempt(address, true);
        clients.push_back({static_cast<std::int64_t>(clients.size()), address, {}, 0});
        status.clients = ClientsStatus::of(clients, clients.size());
    }

    std::vector<std::string> titles() {
        std::vector<std::string> result;
        for (const auto& notice : notices.newIn(status))
            result.push_back(notice.title.text());
        return result;
    }

    std::vector<PairedClient> clients;
};

TEST_F(NoticesTest, ADeviceIsNewOnce) {
    EXPECT_THAT(notices.newIn(status), IsEmpty());
    pair("192.168.1.30");
    const auto told = notices.newIn(status);
    ASSERT_THAT(told, SizeIs(1));
    EXPECT_EQ(told[0].title, "A new device is connected");
    EXPECT_THAT(told[0].text, HasSubstr("192.168.1.30 has paired for the first time."));
    EXPECT_THAT(told[0].text, HasSubstr("set another password"));
    pair("192.168.1.30");
    EXPECT_THAT(notices.newIn(status), IsEmpty());
    EXPECT_THAT(notices.known(), ElementsAre("192.168.1.30"));
}

TEST_F(NoticesTest, AKnownDeviceIsNoNews) {
    Notices later{clock, {"192.168.1.30", "fd42:0:0:1::"}};
    pair("192.168.1.30");
    pair("fd42::1:1:2:3:4"); // the same network by another of its addresses
    EXPECT_THAT(later.newIn(status), IsEmpty());
    EXPECT_THAT(later.known(), ElementsAre("192.168.1.30", "fd42:0:0:1::"));
}

TEST_F(NoticesTest, ThisComputerIsNoDevice) {
    pair("127.0.0.1");
    EXPECT_THAT(notices.newIn(status), IsEmpty());
    EXPECT_THAT(notices.known(), IsEmpty());
}

TEST_F(NoticesTest, ADeviceThatPairsAndGoesIsToldOf) {
    attempt("192.168.1.30", true);
    EXPECT_THAT(titles(), SizeIs(1));
    EXPECT_THAT(titles(), IsEmpty());
}

TEST_F(NoticesTest, DevicesThatComeTogetherAreOneNotice) {
    pair("192.168.1.30");
    pair("192.168.1.31");
    const auto told = notices.newIn(status);
    ASSERT_THAT(told, SizeIs(1));
    EXPECT_THAT(told[0].text, HasSubstr("2 devices"));
}

TEST_F(NoticesTest, TheNextStartIsGivenThoseThatWereHereLast) {
    for (int i = 0; i < 70; ++i)
        pair("10.0.0." + std::to_string(i));
    EXPECT_THAT(titles(), SizeIs(1));
    EXPECT_THAT(titles(), IsEmpty()) << "many are told from each other";
    EXPECT_THAT(notices.known(), SizeIs(Notices::mostKnown));
    EXPECT_EQ(notices.known().back(), "10.0.0.69");
}

TEST_F(NoticesTest, RefusalsAreToldOnceAMinuteAndCounted) {
    attempt("192.168.1.40", false);
    EXPECT_THAT(notices.newIn(status).at(0).text, HasSubstr("once, last from 192.168.1.40."));
    for (int i = 0; i < 3; ++i) {
        attempt("192.168.1.41", false);
        EXPECT_THAT(titles(), IsEmpty());
    }
    clock.advance(io, 59s);
    EXPECT_THAT(titles(), IsEmpty());
    clock.advance(io, 1s);
    EXPECT_THAT(notices.newIn(status).at(0).text, HasSubstr("3 times, last from 192.168.1.41."));
    clock.advance(io, 10min);
    EXPECT_THAT(titles(), IsEmpty());
}

TEST_F(NoticesTest, ARecordingThatCannotBeWrittenIsToldOnceEach) {
    status.recording.emplace();
    status.recording->file = "/a";
    EXPECT_THAT(titles(), IsEmpty());
    status.recording->problem = Phrase::verbatim("The disk is full. Make room.");
    EXPECT_THAT(notices.newIn(status), ElementsAre(Notice{Phrase::verbatim("The recording cannot be written"),
                                                          Phrase::verbatim("The disk is full. Make room.")}));
    EXPECT_THAT(titles(), IsEmpty());
    status.recording->problem.reset();
    EXPECT_THAT(titles(), IsEmpty());
    status.recording->problem = Phrase::verbatim("The disk is full. Make room.");
    EXPECT_THAT(titles(), IsEmpty()) << "it comes and goes";
    status.recording->file = "/b";
    EXPECT_THAT(titles(), SizeIs(1));
}

} // namespace
} // namespace tarnly
