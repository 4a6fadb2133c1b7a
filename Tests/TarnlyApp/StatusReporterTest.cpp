#include "TarnlyApp/StatusReporter.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <chrono>

#include "Support/FakeBackend.hpp"
#include "Support/RunTask.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Net/NetworkAddresses.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::SizeIs;

class FakePublication final : public Publication {
  public:
    PublicationState state() const override { return present; }
    void onChange(std::function<void()>) override {}
    PublicationState present;
};

struct StatusReporterTest : testing::Test {
    CompanionHost::Configuration configuration() {
        CompanionHost::Configuration result;
        result.recordingDirectory = folder.path() / "Recordings";
        result.instanceName = "rig42";
        result.simKind = "xplane";
        result.appVersion = "0.1";
        result.publish = [this](const PublishedService&) { return publication; };
        return result;
    }

    test::TemporaryFolder folder;
    boost::asio::io_context io;
    test::VirtualClock clock;
    WorkerPool workers{1};
    std::shared_ptr<test::FakeBackend> backend = std::make_shared<test::FakeBackend>();
    std::shared_ptr<FakePublication> publication = std::make_shared<FakePublication>();
    CompanionHost host{io.get_executor(), workers, clock, backend, configuration()};
    Phrase words = Phrase::verbatim("Listening");
    std::vector<Phrase> warnings;
    StatusReporter reporter{
        host, *backend, clock, {"/d\xFF", [this] { return words; }, [this] { return warnings; }}};
};

TEST_F(StatusReporterTest, TellsWhatIsKnownBeforeTheStart) {
    const auto status = reporter.collect();
    EXPECT_TRUE(status.isRunning);
    EXPECT_EQ(status.version, TARNLY_VERSION);
    EXPECT_EQ(status.words, "Listening");
    EXPECT_EQ(status.dataFolder, "/d\xEF\xBF\xBD");
    EXPECT_FALSE(status.port);
    EXPECT_EQ(status.published->state, "off");
    EXPECT_FALSE(status.recording);
}

TEST_F(StatusReporterTest, FollowsTheWarnings) {
    EXPECT_FALSE(reporter.collect().warnings);
    warnings = {Phrase::verbatim("One."), Phrase::verbatim("Another.")};
    EXPECT_EQ(reporter.collect().warnings, warnings);
}

TEST_F(StatusReporterTest, TellsWhetherAPasswordIsAskedFor) {
    EXPECT_EQ(reporter.collect().pairing, "open");
    host.pairing().setPassword("secret");
    EXPECT_EQ(reporter.collect().pairing, "password");
}

TEST_F(StatusReporterTest, TellsWhatTheCompanionDrawsUpon) {
    const SourcesStatus sources{"rig", 8086, "/x/Output/situations", {}, {}, {}};
    const StatusReporter telling(
        host, *backend, clock,
        {"/d", [] { return Phrase(); }, [] { return std::vector<Phrase>(); }, [&] { return sources; }});
    EXPECT_EQ(telling.collect().sources, sources);
    EXPECT_FALSE(telling.collect().visitors);
}

TEST_F(StatusReporterTest, FollowsThePublication) {
    test::runTask(io, host.start());
    EXPECT_EQ(reporter.collect().port, host.advertiser().advertisedPort());
    EXPECT_EQ(reporter.collect().published->state, "publishing");
    publication->present = {PublicationState::Kind::published, Phrase::verbatim("rig42 (2)")};
    EXPECT_EQ(reporter.collect().published->name, "rig42 (2)");
    publication->present = {PublicationState::Kind::noDaemon, Phrase::verbatim("no daemon")};
    EXPECT_EQ(reporter.collect().published->reason, "no daemon");
    host.stop();
}

TEST_F(StatusReporterTest, FollowsTheStage) {
    backend->presentStage = {SimulatorStage::Kind::silent, {}, clock.now() - 7s};
    EXPECT_EQ(reporter.collect().stage->words, "Simulator: silent for 7 s");
    clock.advance(io, 2s);
    EXPECT_EQ(reporter.collect().stage->silentSeconds, 9);
    backend->presentStage = {SimulatorStage::Kind::mainMenu, {}, {}};
    EXPECT_EQ(reporter.collect().stage->name, "main_menu");
}

TEST_F(StatusReporterTest, FollowsARecording) {
    host.recording().start();
    test::runTask(io, host.recording().written());
    clock.advance(io, 5s);
    auto recording = reporter.collect().recording;
    EXPECT_EQ(recordingSentence(recording), "Recording for 0:05, no samples yet.");
    host.recording().recordSample({});
    clock.advance(io, 2s);
    recording = reporter.collect().recording;
    EXPECT_EQ(recording->samples, 1);
    EXPECT_EQ(recording->lastSampleAgeSeconds, 2.0);
    EXPECT_EQ(recording->runningSeconds, 7.0);
    EXPECT_EQ(std::filesystem::path(recording->file).parent_path(), folder.path() / "Recordings");
    host.recording().stop();
    EXPECT_FALSE(reporter.collect().recording);
}

TEST_F(StatusReporterTest, TheJsonHasTheAddressesOfOneThatListens) {
    CompanionStatus status;
    EXPECT_THAT(decodeJson<CompanionStatus>(parseJson(statusJson(status))).addresses, SizeIs(0));
    status.port = 41234;
    const auto told = decodeJson<CompanionStatus>(parseJson(statusJson(status)));
    ASSERT_THAT(told.addresses, SizeIs(networkAddresses().size()));
    for (const auto& address : told.addresses)
        EXPECT_THAT(address, testing::AllOf(testing::StartsWith("ws://"), testing::EndsWith(":41234")));
}

TEST(EndedStatus, TellsNothingThatIsNotSo) {
    const auto status = endedStatus(Phrase::verbatim("Tarnly has ended."), "/d");
    EXPECT_FALSE(status.isRunning);
    EXPECT_EQ(status.words, "Tarnly has ended.");
    EXPECT_EQ(status.dataFolder, "/d");
    EXPECT_FALSE(status.stage);
    EXPECT_FALSE(status.port);
}

} // namespace
} // namespace tarnly
