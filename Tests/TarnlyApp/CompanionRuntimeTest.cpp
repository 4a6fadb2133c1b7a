#include "TarnlyApp/CompanionRuntime.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <cstdlib>
#include <future>
#include <new>
#include <thread>
#include <vector>

#include "Support/LoopbackListener.hpp"
#include "Support/RunTask.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Protocol/StatusQuery.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Net/WebSocketOpening.hpp"

namespace tarnly {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Kind = WebSocketConnection::Kind;
using State = CompanionRuntime::State;

Task<std::string> answerTo(std::shared_ptr<WebSocketConnection> client, std::string request) {
    client->send(std::move(request), Kind::awaited);
    const auto answer = co_await client->receive();
    co_return answer ? answer->content : "closed";
}

/// A runtime whose network thread runs for as long as the test.
class CompanionRuntimeTest : public testing::Test {
  protected:
    CompanionRuntimeTest() {
        options.dataFolder = folder.path();
        options.simulatorPort = 1; // nobody is there
        options.advertises = false;
        options.port = 0;
        ::setenv("HOME", folder.path().c_str(), 1); // no person's simulator
    }

    ~CompanionRuntimeTest() override {
        if (runtime) runtime->end();
        if (network.joinable()) network.join();
        ::setenv("HOME", home.c_str(), 1);
    }

    /// Starts, and returns when the outcome is known.
    void start() {
        runtime.emplace(settings, options);
        EXPECT_EQ(runtime->statusText(), "Starting…");
        EXPECT_EQ(runtime->state(), State::starting);
        EXPECT_EQ(runtime->port(), std::nullopt);
        std::promise<void> outcome;
        runtime->onStatusChange = [&] {
            ++statusChanges;
            outcome.set_value();
        };
        runtime->start();
        network = std::thread([this] { runtime->run(); });
        outcome.get_future().wait();
    }

    std::shared_ptr<WebSocketConnection> connect() {
        return openWebSocket(io.get_executor(), clock, Endpoint{"127.0.0.1", runtime->port().value()}, "/");
    }

    std::string ask(const std::shared_ptr<WebSocketConnection>& client, const std::string& request) {
        return test::runTask(io, answerTo(client, request));
    }

    CompanionStatus status() {
        std::promise<CompanionStatus> answer;
        runtime->askStatus([&](CompanionStatus status) { answer.set_value(std::move(status)); });
        return answer.get_future().get();
    }

    CompanionStatus statusInFile() {
        return decodeJson<CompanionStatus>(parseJson(test::contentOf(*options.statusFile)));
    }

    /// Asks until the answer says so.
    void waitUntilAnswered(const std::string& request, const std::string& part) {
        const auto client = connect();
        ask(client, pairAsking);
        for (int i = 0; i < 6000; ++i) {
            if (ask(client, request).find(part) != std::string::npos) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << request << " is never answered with " << part;
    }

    /// Until one of the warnings says so; none where `part` is empty.
    void waitForWarning(const std::string& part) {
        for (int i = 0; i < 6000; ++i) {
            const auto warnings = status().warnings.value_or(std::vector<Phrase>());
            if (part.empty() ? warnings.empty() : std::ranges::any_of(warnings, [&](const auto& warning) {
                    return warning.text().find(part) != std::string::npos;
                }))
                return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "no warning: " << part;
    }

    const test::TemporaryFolder folder;
    const std::string home = ::getenv("HOME") == nullptr ? "" : ::getenv("HOME");
    const std::string pairAsking = R"({"type":"pair"})";
    const std::string listing = R"({"type":"list_flights"})";
    CompanionOptions options;
    SettingsStore settings{AppSettings::fileIn(folder.path()), nullptr};
    boost::asio::io_context io;
    SystemClock clock;
    std::atomic<int> statusChanges{0};
    std::optional<CompanionRuntime> runtime;
    std::thread network;
};

const std::string pairAskingWithSecret = R"({"type":"pair","params":{"password":"secret"}})";

TEST_F(CompanionRuntimeTest, SaysWhereItListens) {
    start();
    EXPECT_EQ(runtime->state(), State::listening);
    EXPECT_EQ(runtime->statusText(), "Listening on port " + std::to_string(runtime->port().value()) +
                                         ", not advertised, pairing open.");
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":true)"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "Recordings"));
}

TEST_F(CompanionRuntimeTest, SaysThatAPasswordIsRequired) {
    settings.setPassword("secret");
    start();
    EXPECT_THAT(runtime->statusText().text(), EndsWith(", pairing password required."));
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":false)"));
    EXPECT_THAT(ask(connect(), pairAskingWithSecret), HasSubstr(R"("accepted":true)"));
}

TEST_F(CompanionRuntimeTest, APasswordCountsAtOnceAndTheStatusStays) {
    start();
    const auto status = runtime->statusText().text();
    settings.setPassword("secret");
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":false)"));
    EXPECT_THAT(ask(connect(), pairAskingWithSecret), HasSubstr(R"("accepted":true)"));
    settings.setPassword("");
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":true)"));
    EXPECT_EQ(runtime->statusText(), status);
    EXPECT_THAT(status, EndsWith(", pairing open."));
}

TEST_F(CompanionRuntimeTest, APasswordBeforeTheStartIsThatOfTheStart) {
    runtime.emplace(settings, options);
    settings.setPassword("early");
    start();
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":false)"));
}

TEST_F(CompanionRuntimeTest, ASecondStartDoesNothing) {
    start();
    const auto port = runtime->port();
    runtime->start();
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":true)"));
    EXPECT_EQ(runtime->port(), port);
    EXPECT_EQ(statusChanges, 1);
}

TEST_F(CompanionRuntimeTest, WhatAHandlerThrowsEndsNothingElse) {
    start();
    const auto client = connect();
    boost::asio::post(runtime->executor(), [] { throw std::bad_alloc(); });
    EXPECT_THAT(ask(client, pairAsking), HasSubstr(R"("accepted":true)"));
    EXPECT_THAT(ask(connect(), pairAsking), HasSubstr(R"("accepted":true)"));
}

TEST_F(CompanionRuntimeTest, SaysWhyTheStartFailedAndDoesNotRetry) {
    test::LoopbackListener taken(io, clock);
    options.port = taken.endpoint().port;
    start();
    EXPECT_EQ(runtime->state(), State::failed);
    EXPECT_THAT(runtime->statusText().text(),
                AllOf(StartsWith("Failed to start: listenFailed(\"port "),
                      HasSubstr("in use\"). End the program that has it, or choose")));
    EXPECT_EQ(runtime->port(), std::nullopt);
    runtime->start();
    EXPECT_EQ(statusChanges, 1);
}

TEST_F(CompanionRuntimeTest, WhatCannotBeBuiltIsAFailedStart) {
    options.navigationDatabase = folder.path() / "missing.db";
    start();
    EXPECT_EQ(runtime->state(), State::failed);
    EXPECT_THAT(runtime->statusText().text(), AllOf(StartsWith("Failed to start: "), HasSubstr("(")));
}

TEST_F(CompanionRuntimeTest, TellsWhatItIsDoing) {
    start();
    EXPECT_EQ(status().clients, ClientsStatus());
    EXPECT_EQ(status().words, runtime->statusText());
    EXPECT_EQ(status().port, runtime->port());
    EXPECT_EQ(status().dataFolder, folder.path());
    const auto client = connect();
    ask(client, pairAsking);
    EXPECT_EQ(status().clients.paired, 1);
    ask(client, R"({"type":"recording_start"})");
    EXPECT_TRUE(status().recording.has_value());
    ask(client, R"({"type":"recording_stop"})");
    EXPECT_FALSE(status().recording.has_value());
}

TEST_F(CompanionRuntimeTest, TellsItToOtherPrograms) {
    start();
    const auto told = decodeJson<CompanionStatus>(parseJson(askForStatus(folder.path())));
    EXPECT_TRUE(told.isRunning);
    EXPECT_EQ(told.port, runtime->port());
    EXPECT_EQ(told.words, runtime->statusText());
    runtime->end();
    network.join();
    EXPECT_THROW(askForStatus(folder.path()), StatusQueryError);
}

TEST_F(CompanionRuntimeTest, OfTwoOnOneDataFolderTheFirstTells) {
    start();
    CompanionRuntime second(settings, options);
    second.start();
    std::thread secondNetwork([&] { second.run(); });
    std::promise<void> asked;
    second.askStatus([&](const CompanionStatus&) { asked.set_value(); }); // it has begun
    asked.get_future().wait();
    const auto told = decodeJson<CompanionStatus>(parseJson(askForStatus(folder.path())));
    EXPECT_EQ(told.port, runtime->port());
    second.end();
    secondNetwork.join();
    EXPECT_EQ(decodeJson<CompanionStatus>(parseJson(askForStatus(folder.path()))).port, runtime->port());
}

TEST_F(CompanionRuntimeTest, TheLastWordOfTheStatusFileIsThatItHasEnded) {
    options.statusFile = folder.path() / "status.json";
    start();
    runtime->end();
    network.join();
    EXPECT_EQ(statusInFile(), endedStatus(Phrase::verbatim("Tarnly has ended."), folder.path()));
}

TEST_F(CompanionRuntimeTest, TheStatusFileSaysWhyTheStartFailed) {
    options.statusFile = folder.path() / "status.json";
    options.navigationDatabase = folder.path() / "missing.db";
    start();
    network.join();
    EXPECT_EQ(statusInFile(), endedStatus(runtime->statusText(), folder.path()));
}

TEST_F(CompanionRuntimeTest, TheSimulatorsSituationsAreFoundByItsInstallersNote) {
    const auto situations = folder.path() / "X-Plane 12" / "Output" / "situations";
    std::filesystem::create_directories(situations);
    std::filesystem::create_directories(folder.path() / ".x-plane");
    folder.write("X-Plane 12/Output/situations/Pattern.sit", "");
    folder.write(".x-plane/x-plane_install_12.txt", (folder.path() / "X-Plane 12").string() + "/\n");
    start();
    waitUntilAnswered(listing, "Pattern");
    waitForWarning("");
}

TEST_F(CompanionRuntimeTest, ASimulatorWithoutSituationsIsSaidToHaveNone) {
    std::filesystem::create_directories(folder.path() / "X-Plane 12");
    std::filesystem::create_directories(folder.path() / ".x-plane");
    folder.write(".x-plane/x-plane_install_12.txt", (folder.path() / "X-Plane 12").string() + "/\n");
    start();
    waitForWarning("X-Plane 12/Output/situations, is not there, so none is listed.");
    std::filesystem::create_directories(folder.path() / "X-Plane 12" / "Output" / "situations");
    waitForWarning("");
}

TEST_F(CompanionRuntimeTest, AWarningOfAListingGoesWithItsCause) {
    const auto situations = folder.path() / "situations";
    std::filesystem::create_directory(situations);
    folder.write("situations/b\xFF.sit", "");
    settings.set(&AppSettings::situationsFolder, situations.string());
    start();
    waitUntilAnswered(listing, R"("flights":[)");
    waitForWarning("whose names are not UTF-8 are left out");
    std::filesystem::remove(situations / "b\xFF.sit");
    waitUntilAnswered(listing, R"("flights":[)");
    waitForWarning("");
}

TEST_F(CompanionRuntimeTest, AWarningOfANavigationDatabaseGoesWithTheDatabase) {
    const auto letter = folder.write("letter.txt", std::string(5000, 'x'));
    settings.set(&AppSettings::navigationDatabase, letter.string());
    start();
    waitUntilAnswered(
        R"({"type":"load_script","params":{"triggers":[{"id":"a","condition_kind":"reaches_fix",)"
        R"("condition":{"fix":"KLO","within_nm":2},"action_kind":"speak","action":{}}]}})",
        "unresolved_fixes");
    waitForWarning("cannot be read");
    settings.set(&AppSettings::navigationDatabase, std::nullopt);
    waitForWarning("");
}

TEST_F(CompanionRuntimeTest, SettingsOfTheSimulatorsFilesCountAtOnce) {
    std::filesystem::create_directory(folder.path() / "left");
    std::filesystem::create_directory(folder.path() / "right");
    folder.write("left/Left.sit", "");
    folder.write("right/Right.sit", "");
    settings.set(&AppSettings::situationsFolder, (folder.path() / "left").string());
    start();
    waitUntilAnswered(listing, "Left");
    settings.set(&AppSettings::situationsFolder, (folder.path() / "right").string());
    waitUntilAnswered(listing, "Right");
    settings.set(&AppSettings::situationsFolder, (folder.path() / "neither").string());
    waitForWarning("neither, is not there, so none is listed.");
    settings.set(&AppSettings::situationsFolder, std::nullopt);
    waitForWarning("");
    waitUntilAnswered(listing, "situationsDirectoryNotConfigured");
}

TEST_F(CompanionRuntimeTest, ANavigationDatabaseOfTheSettingsThatIsMissingIsAWarning) {
    settings.set(&AppSettings::navigationDatabase, (folder.path() / "missing.db").string());
    start();
    EXPECT_EQ(runtime->state(), State::listening);
    waitForWarning("The navigation database of the settings cannot be used");
    settings.set(&AppSettings::navigationDatabase, std::nullopt);
    waitForWarning("");
}

TEST_F(CompanionRuntimeTest, OriginsOfTheSettingsCountAtOnce) {
    const auto isLetIn = [&] {
        boost::asio::ip::tcp::socket socket(io);
        socket.connect({boost::asio::ip::address_v4::loopback(), runtime->port().value()});
        const std::string request =
            "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\n"
            "Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
            "Sec-WebSocket-Key: AAAAAAAAAAAAAAAAAAAAAA==\r\n"
            "Origin: https://example.com\r\n\r\n";
        boost::asio::write(socket, boost::asio::buffer(request));
        std::string status(std::string("HTTP/1.1 101").size(), ' ');
        boost::asio::read(socket, boost::asio::buffer(status));
        return status.ends_with("101");
    };
    const auto waitUntilLetIn = [&](bool expected) {
        for (int i = 0; i < 1000 && isLetIn() != expected; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(isLetIn(), expected);
    };
    start();
    EXPECT_FALSE(isLetIn());
    settings.set(&AppSettings::allowedOrigins, std::vector<std::string>{"https://example.com"});
    waitUntilLetIn(true);
    settings.set(&AppSettings::allowedOrigins, std::nullopt);
    waitUntilLetIn(false);
}

TEST_F(CompanionRuntimeTest, ASettingThatCannotBeIsAWarning) {
    folder.write("settings.json", R"({"startAtLogin":false,"port":70000})");
    SettingsStore faulty{AppSettings::fileIn(folder.path()), nullptr};
    runtime.emplace(faulty, options);
    runtime->start();
    network = std::thread([this] { runtime->run(); });
    waitForWarning("The setting \"port\" in ");
    faulty.set(&AppSettings::port, 28086);
    waitForWarning("");
    runtime->end();
    network.join();
    runtime.reset();
}

TEST_F(CompanionRuntimeTest, LetsGoOfTheSettingsAtItsEnd) {
    runtime.emplace(settings, options);
    EXPECT_TRUE(settings.onPasswordChange);
    EXPECT_TRUE(settings.onSetupChange);
    runtime.reset();
    EXPECT_FALSE(settings.onPasswordChange);
    EXPECT_FALSE(settings.onSetupChange);
}

TEST(StatusText, SaysHowTheCompanionCanBeReached) {
    const PublicationState published{PublicationState::Kind::published, Phrase::verbatim("rig42 (2)")};
    EXPECT_EQ(listeningText(41234, published, false),
              "Listening on port 41234, advertising as \"rig42 (2)\", pairing open.");
    EXPECT_EQ(listeningText(1, published, true),
              "Listening on port 1, advertising as \"rig42 (2)\", pairing password required.");
    EXPECT_EQ(listeningText(41234, std::nullopt, false),
              "Listening on port 41234, not advertised, pairing open.");
    EXPECT_EQ(listeningText(std::nullopt, published, false),
              "Listening on port ?, advertising as \"rig42 (2)\", pairing open.");
}

TEST(StatusText, ClaimsNothingThatTheDaemonHasNotConfirmed) {
    const auto text = [](PublicationState::Kind kind) {
        return listeningText(1, PublicationState{kind, Phrase::verbatim("why; and what to do")}, false);
    };
    EXPECT_EQ(text(PublicationState::Kind::publishing),
              "Listening on port 1, not advertised yet, pairing open.");
    EXPECT_EQ(text(PublicationState::Kind::noDaemon),
              "Listening on port 1, not advertised: no DNS-SD daemon, pairing open.");
    EXPECT_EQ(text(PublicationState::Kind::refused),
              "Listening on port 1, not advertised: refused by the DNS-SD daemon, pairing open.");
}

TEST(StatusText, SaysWhyAStartFailed) {
    EXPECT_EQ(failureText(Phrase::verbatim("alreadyStarted")), "Failed to start: alreadyStarted");
}

TEST_F(CompanionRuntimeTest, ConnectionsAreClosedInOrderAtTheEnd) {
    start();
    const auto client = connect();
    EXPECT_THAT(ask(client, pairAsking), HasSubstr(R"("accepted":true)"));
    runtime->end();
    EXPECT_FALSE(test::runTask(io, client->receive()));
    EXPECT_FALSE(client->failure());
    network.join();
}

TEST_F(CompanionRuntimeTest, AnEndBeforeTheBeginningIsAnEnd) {
    runtime.emplace(settings, options);
    runtime->start();
    runtime->end();
    runtime->run();
}

} // namespace
} // namespace tarnly
