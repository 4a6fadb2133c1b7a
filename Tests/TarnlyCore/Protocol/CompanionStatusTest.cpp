#include "TarnlyCore/Protocol/CompanionStatus.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/ip/address.hpp>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using Kind = SimulatorStage::Kind;

constexpr Clock::TimePoint now{1h};

/// One in which everything is there.
CompanionStatus wholeStatus() {
    CompanionStatus status;
    status.version = "0.1";
    status.isRunning = true;
    status.words = Phrase::verbatim("Listening on port 41234, advertising as \"rig42 (2)\", pairing open.");
    status.warn(Phrase::verbatim("The settings could not be read."));
    status.warn(Phrase::verbatim("The disk is \xFF."));
    status.port = 41234;
    status.addresses = {"ws://192.168.1.20:41234", "ws://[fd42::20]:41234"};
    status.published = {"published", "rig42 (2)", {}};
    status.stage = StageStatus::of({Kind::silent, {}, now - 7s}, now);
    status.pairing = "password";
    status.sources = SourcesStatus{"127.0.0.1", 8086, "/x/Output/situations", "/x/nav.db", "2501", true};
    Visitors visitors(
        [] { return std::chrono::sys_days(std::chrono::year(2026) / 11 / 2) + 3h + 4min + 5s; });
    visitors.note(Visitors::Kind::page, PeerNetwork(boost::asio::ip::make_address("192.0.2.7")));
    visitors.note(Visitors::Kind::refused, PeerNetwork(boost::asio::ip::make_address("2001:db8::1")));
    status.visitors = VisitorsStatus::of(visitors);
    const std::chrono::sys_seconds time(std::chrono::seconds(1'795'317'300));
    status.clients = ClientsStatus::of({{4, "192.168.1.30", time, 12}, {7, "fd42::", time + 5s, 0}}, 3);
    status.recording = RecordingStatus::of(
        {"/d/Recordings/a.jsonl", 65s, 12, 430ms, Phrase::verbatim("The log is not being written.")});
    status.dataFolder = "/d";
    return status;
}

constexpr auto wholeStatusJson =
    R"-({"version":"0.1","running":true,)-"
    R"-("words":"Listening on port 41234, advertising as \"rig42 (2)\", pairing open.",)-"
    R"-("warnings":["The settings could not be read.","The disk is �."],)-"
    R"-("port":41234,"addresses":["ws:\/\/192.168.1.20:41234","ws:\/\/[fd42::20]:41234"],)-"
    R"-("published":{"state":"published","name":"rig42 (2)"},)-"
    R"-("stage":{"name":"silent","words":"Simulator: silent for 7 s",)-"
    R"-("advice":"look at the simulator, and restart it if it does not react","silent_for_s":7},)-"
    R"-("pairing":"password","sources":{"sim_host":"127.0.0.1","sim_port":8086,)-"
    R"-("situations":"\/x\/Output\/situations","nav_db":"\/x\/nav.db","nav_db_cycle":"2501","nav_db_in_the_making":true},)-"
    R"-("visitors":{"page":{"count":1,"at":"2026-11-02T03:04:05Z","from":"192.0.2.7"},)-"
    R"-("refused":{"count":1,"at":"2026-11-02T03:04:05Z","from":"2001:db8::"}},)-"
    R"-("clients":{"paired":2,"connected":3,"list":[)-"
    R"-({"id":4,"address":"192.168.1.30","since":"2026-11-22T03:15:00Z","subscriptions":12},)-"
    R"-({"id":7,"address":"fd42::","since":"2026-11-22T03:15:05Z","subscriptions":0}]},)-"
    R"-("recording":{"file":"\/d\/Recordings\/a.jsonl","samples":12,)-"
    R"-("last_sample_age_s":0.4,"running_for_s":65,)-"
    R"-("problem":"The log is not being written."},)-"
    R"-("data_folder":"\/d"})-";

TEST(CompanionStatus, HasItsJson) {
    EXPECT_EQ(encodeJson(wholeStatus()), wholeStatusJson);
    EXPECT_EQ(decodeJson<CompanionStatus>(parseJson(wholeStatusJson)), wholeStatus());
}

TEST(CompanionStatus, WhatIsNotThereIsLeftOut) {
    CompanionStatus status;
    status.version = "0.1";
    status.words = Phrase::verbatim("Tarnly has ended.");
    status.dataFolder = "/d";
    EXPECT_EQ(encodeJson(status),
              R"({"version":"0.1","running":false,"words":"Tarnly has ended.","addresses":[],)"
              R"("clients":{"paired":0,"connected":0},"data_folder":"\/d"})");
    EXPECT_EQ(decodeJson<CompanionStatus>(parseJson(encodeJson(status))), status);
}

void addKeys(const boost::json::object& object, const std::string& above, std::vector<std::string>& keys) {
    for (const auto& [key, value] : object) {
        keys.push_back(above + std::string(key));
        const auto whose = keys.back() + ".";
        if (value.is_object()) addKeys(value.as_object(), whose, keys);
        if (!value.is_array() || value.get_array().empty()) continue;
        const auto& first = value.get_array().front();
        if (first.is_object()) addKeys(first.get_object(), whose, keys);
    }
}

TEST(CompanionStatus, EveryKeyIsExplained) {
    auto status = wholeStatus();
    status.stage->detail = Phrase::verbatim("x");
    status.published->reason = Phrase::verbatim("x");
    std::vector<std::string> keys;
    addKeys(parseJson(encodeJson(status)).as_object(), "", keys);
    EXPECT_EQ(keys.size(), 48U);
    const auto page = test::contentOf(std::filesystem::path(TARNLY_DOCS) / "status.md");
    // The table does not list `clients` itself, and what is told of a visit but once.
    std::erase(keys, "clients");
    std::erase_if(keys, [](const auto& key) { return key.starts_with("visitors.refused."); });
    for (const auto& key : keys)
        EXPECT_THAT(page, testing::HasSubstr("\n| `" + key + "` | ")) << key;
}

TEST(CompanionStatus, TellsItAllToPeople) {
    EXPECT_THAT(statusLines(wholeStatus()),
                ElementsAre("Listening on port 41234, advertising as \"rig42 (2)\", pairing open.",
                            "The settings could not be read.", "The disk is �.",
                            "Published by DNS-SD as \"rig42 (2)\".",
                            "Addresses: ws://192.168.1.20:41234 ws://[fd42::20]:41234",
                            "Simulator: silent for 7 s. Look at the simulator, and restart it if it does not "
                            "react.",
                            "2 clients are paired.", "Recording for 1:05. The log is not being written.",
                            "Data folder: /d"));
}

TEST(CompanionStatus, OfOneThatDoesNotRunOnlyThatIsTold) {
    auto status = wholeStatus();
    status.isRunning = false;
    status.warnings.reset();
    status.words = Phrase::verbatim("Failed to start: listenFailed(\"port 41234: Address already in use\")");
    EXPECT_THAT(statusLines(status), ElementsAre(status.words.text(), "Data folder: /d"));
}

TEST(CompanionStatus, HasItsWarningsInOne) {
    EXPECT_EQ(warningSentences(CompanionStatus()), "");
    EXPECT_EQ(warningSentences(wholeStatus()), "The settings could not be read. The disk is �.");
}

TEST(CompanionStatus, WithoutANetworkThereIsAnAdvice) {
    auto status = wholeStatus();
    status.addresses.clear();
    EXPECT_EQ(statusLines(status).at(4), "No address: connect this computer to a network.");
}

TEST(StageStatus, IsTheStagesWordsAndItsAdvice) {
    const auto notRunning = StageStatus::of({Kind::notRunning, {}, {}}, now);
    EXPECT_EQ(notRunning,
              (StageStatus{"not_running", Phrase::verbatim("Simulator: not running"),
                           Phrase::verbatim("start X-Plane 12.1.4 or later"), std::nullopt, std::nullopt}));
    EXPECT_EQ(stageSentences(notRunning), "Simulator: not running. Start X-Plane 12.1.4 or later.");
    const auto loaded = StageStatus::of({Kind::flightLoaded, {}, {}}, now);
    EXPECT_EQ(stageSentences(loaded), "Simulator: flight loaded.");
}

TEST(StageStatus, HasTheDetailAsTextThatCanBeWritten) {
    const auto stage =
        StageStatus::of({Kind::refusing, Phrase::verbatim("Incoming traffic is \xFF disabled"), {}}, now);
    EXPECT_EQ(stage.detail, "Incoming traffic is \xEF\xBF\xBD disabled");
    EXPECT_EQ(stage.words, "Simulator: refuses connections (Incoming traffic is \xEF\xBF\xBD disabled)");
}

TEST(PublicationStatus, HasAllItsStates) {
    using State = PublicationState::Kind;
    EXPECT_EQ(PublicationStatus::of(std::nullopt), (PublicationStatus{"off", {}, {}}));
    EXPECT_EQ(PublicationStatus::of(PublicationState{State::publishing, {}}),
              (PublicationStatus{"publishing", {}, {}}));
    EXPECT_EQ(PublicationStatus::of(PublicationState{State::published, Phrase::verbatim("rig")}),
              (PublicationStatus{"published", "rig", {}}));
    EXPECT_EQ(PublicationStatus::of(PublicationState{State::noDaemon, Phrase::verbatim("no daemon")}),
              (PublicationStatus{"not_published", {}, Phrase::verbatim("no daemon")}));
    EXPECT_EQ(PublicationStatus::of(PublicationState{State::refused, Phrase::verbatim("too many")}),
              (PublicationStatus{"not_published", {}, Phrase::verbatim("too many")}));
}

TEST(PublicationStatus, HasItsWords) {
    EXPECT_EQ(publicationSentence({"off", {}, {}}), "Not published by DNS-SD.");
    EXPECT_EQ(publicationSentence({"publishing", {}, {}}), "Being published by DNS-SD.");
    EXPECT_EQ(publicationSentence({"published", "rig", {}}), "Published by DNS-SD as \"rig\".");
    EXPECT_EQ(publicationSentence({"not_published", {}, Phrase::verbatim("no daemon; start one")}),
              "Not published by DNS-SD: no daemon; start one.");
}

TEST(ClientsStatus, CountsTheClientsThatHavePaired) {
    EXPECT_EQ(clientsSentence({0, 4}), "No client is paired.");
    EXPECT_EQ(clientsSentence({1, 1}), "1 client is paired.");
    EXPECT_EQ(clientsSentence({2, 2}), "2 clients are paired.");
    EXPECT_EQ(clientsSentence({11, 12}), "11 clients are paired.");
}

TEST(RecordingStatus, TellsHowManySamplesThereAreAndHowOldTheLastIs) {
    EXPECT_EQ(samplesSentence(RecordingStatus::of({"/a", 65s, 0, std::nullopt, {}})), "");
    EXPECT_EQ(samplesSentence(RecordingStatus::of({"/a", 65s, 1, 430ms, {}})), "1 sample, taken 0.4 s ago.");
    EXPECT_EQ(samplesSentence(RecordingStatus::of({"/a", 65s, 1200, 12s, {}})),
              "1200 samples, the last one taken 12 s ago.");
}

Phrase recordingFor(std::chrono::nanoseconds time) {
    return recordingSentence(RecordingStatus::of({"/a", time, 1, 0s, {}}));
}

TEST(RecordingStatus, TellsForHowLongARecordingRuns) {
    EXPECT_EQ(recordingSentence(std::nullopt), "No recording is running.");
    EXPECT_EQ(recordingFor(0s), "Recording for 0:00.");
    EXPECT_EQ(recordingFor(59999ms), "Recording for 0:59.");
    EXPECT_EQ(recordingFor(65s), "Recording for 1:05.");
    EXPECT_EQ(recordingFor(59min + 59s), "Recording for 59:59.");
    EXPECT_EQ(recordingFor(1h + 5s), "Recording for 1:00:05.");
    EXPECT_EQ(recordingFor(36h + 10min), "Recording for 36:10:00.");
}

TEST(RecordingStatus, SaysThatThereAreNoSamples) {
    EXPECT_EQ(recordingSentence(RecordingStatus::of({"/a", 5s, 0, std::nullopt, {}})),
              "Recording for 0:05, no samples yet.");
}

TEST(RecordingStatus, HasItsTimesToTheTenth) {
    const auto status = RecordingStatus::of({"/a", 12'345ms, 2, 299ms, {}});
    EXPECT_EQ(encodeJson(status),
              R"({"file":"\/a","samples":2,"last_sample_age_s":0.2,"running_for_s":12.3})");
}

} // namespace
} // namespace tarnly
