#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <sstream>
#include <thread>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyClient/Commands/CommandLine.hpp"
#include "TarnlyCore/Protocol/CompanionStatus.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/LocalSocket.hpp"

namespace tarnly::client {
namespace {

Task<std::string> answerWith(std::string text) { co_return text; }

/// Tells `answer` to who asks for the status of its data folder.
class StatusTeller {
  public:
    explicit StatusTeller(std::string answer)
        : listener_(
              std::make_unique<LocalListener>(io_.get_executor(), clock_, statusSocketIn(folder_.path()),
                                              [answer = std::move(answer)] { return answerWith(answer); })),
          thread_([this] { io_.run(); }) {}
    StatusTeller(const StatusTeller&) = delete;
    StatusTeller& operator=(const StatusTeller&) = delete;
    ~StatusTeller() {
        io_.stop();
        thread_.join();
        listener_.reset();
    }

    std::string folder() const { return folder_.path().string(); }

  private:
    const test::TemporaryFolder folder_;
    SystemClock clock_;
    boost::asio::io_context io_{1};
    std::unique_ptr<LocalListener> listener_;
    std::thread thread_;
};

struct StatusCommandTest : testing::Test {
    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "status");
        return runClient(arguments, out, err);
    }

    std::ostringstream out;
    std::ostringstream err;
};

CompanionStatus present() {
    CompanionStatus status;
    status.isRunning = true;
    status.words = Phrase::verbatim("Listening on port 1, not advertised, pairing open.");
    status.stage = StageStatus::of({SimulatorStage::Kind::mainMenu, {}, {}}, {});
    status.dataFolder = "/d";
    return status;
}

TEST_F(StatusCommandTest, SaysItInTheWordsForPeople) {
    const StatusTeller companion(encodeJson(present()));
    EXPECT_EQ(run({"--data-dir", companion.folder()}), 0) << err.str();
    EXPECT_EQ(out.str(),
              "Listening on port 1, not advertised, pairing open.\n"
              "Simulator: at the main menu. Load a flight.\n"
              "No client is paired.\nNo recording is running.\nData folder: /d\n");
}

TEST_F(StatusCommandTest, PrintsTheObjectForPrograms) {
    const auto json = encodeJson(present());
    const StatusTeller companion(json);
    EXPECT_EQ(run({"--json", "--data-dir", companion.folder()}), 0) << err.str();
    EXPECT_EQ(out.str(), json + "\n");
}

TEST_F(StatusCommandTest, SaysWhatToDoWhereNoneRuns) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(run({"--data-dir", folder.path().string()}), 1);
    EXPECT_EQ(err.str(), "tarnly-client: no companion runs on the data folder " + folder.path().string() +
                             "; start tarnly or tarnlyd, or name another folder by --data-dir; "
                             "why tarnlyd does not stay is told by journalctl --user -u tarnlyd\n");
}

TEST_F(StatusCommandTest, SaysThatItDoesNotUnderstand) {
    const StatusTeller companion("{}");
    EXPECT_EQ(run({"--data-dir", companion.folder()}), 1);
    EXPECT_THAT(err.str(), testing::HasSubstr("use the tool that came with it"));
}

TEST_F(StatusCommandTest, IsAboutThisComputer) {
    EXPECT_EQ(run({"--host", "rig", "--port", "1"}), 2);
    EXPECT_THAT(err.str(), testing::HasSubstr("it takes neither --host nor --instance"));
}

} // namespace
} // namespace tarnly::client
