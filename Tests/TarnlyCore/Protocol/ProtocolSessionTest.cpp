#include "TarnlyCore/Protocol/ProtocolSession.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/detached.hpp>
#include <future>

#include "Support/FakeBackend.hpp"
#include "Support/RunTask.hpp"
#include "Support/SessionAnswers.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyCore/Protocol/ProtocolLimits.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;

/// The push, however it comes about.
Task<std::optional<std::string>> pushOf(std::shared_ptr<ProtocolSession> session) {
    auto push = session->buildSubscriptionPush();
    if (auto* present = std::get_if<std::optional<std::string>>(&push)) co_return std::move(*present);
    auto text = co_await std::move(std::get<Task<std::optional<std::string>>>(push));
    co_return text;
}

struct ProtocolSessionTest : testing::Test {
    boost::asio::io_context io;
    WorkerPool workers{1};
    std::shared_ptr<test::FakeBackend> backend = std::make_shared<test::FakeBackend>();
    test::TemporaryFolder folder;
    test::VirtualClock clock;
    std::shared_ptr<FlightRecorder> recording = std::make_shared<FlightRecorder>(folder.path(), clock);
    std::shared_ptr<LoadedScript> loadedScript = std::make_shared<LoadedScript>();
    std::map<std::string, Coordinate> fixes;
    std::shared_ptr<PairingManager> pairing = std::make_shared<PairingManager>(std::nullopt);
    std::shared_ptr<PairingGuard> guard = std::make_shared<PairingGuard>(io.get_executor(), clock);
    std::shared_ptr<Allowance> names = std::make_shared<Allowance>(ProtocolLimits::namesInAll);
    std::shared_ptr<ProtocolSession> session = newSession();

    ProtocolSession::Services services(MakeFixResolver makeFixResolver) {
        return {pairing, guard,   backend, recording, loadedScript, std::move(makeFixResolver),
                names,   workers, workers};
    }

    std::shared_ptr<ProtocolSession> newSession() {
        return std::make_shared<ProtocolSession>(services(
            [this](const auto&) { return [this](const std::string& ident) { return resolve(ident); }; }));
    }

    std::optional<Coordinate> resolve(const std::string& ident) const {
        const auto found = fixes.find(ident);
        return found == fixes.end() ? std::nullopt : std::optional(found->second);
    }

    std::optional<std::string> handle(std::string text) {
        return test::runTask(io, test::answerOf(session, std::move(text)));
    }

    std::string reply(std::string text) { return handle(std::move(text)).value_or("no reply"); }

    std::optional<std::string> push() { return test::runTask(io, pushOf(session)); }

    void pair() { ASSERT_TRUE(handle(R"({"type":"pair"})")); }

    boost::json::value json(std::string text) { return parseJson(reply(std::move(text))); }
};

std::string error(const std::string& message, const std::string& reqId = "") {
    return R"({"type":"error",)" + (reqId.empty() ? "" : R"("req_id":)" + reqId + ",") +
           R"("data":{"message":")" + message + "\"}}";
}

// The pairing gate

TEST_F(ProtocolSessionTest, AnUnpairedClientLearnsNothing) {
    for (const char* text :
         {R"({"type":"sim_info","req_id":3})", R"({"type":"no such type"})", "not JSON", "", "[]",
          R"({"req_id":1})", R"({"type":7})", R"({"type":"pair","req_id":"x"})", "{}"}) {
        EXPECT_FALSE(handle(text)) << text;
        EXPECT_FALSE(session->isPaired());
    }
    EXPECT_TRUE(backend->calls.empty());
}

TEST_F(ProtocolSessionTest, PairingGivesAToken) {
    const auto response = json(R"({"type":"pair","req_id":7})");
    EXPECT_EQ(response.at("type"), "pair");
    EXPECT_EQ(response.at("req_id"), 7);
    EXPECT_EQ(response.at("data").at("accepted"), true);
    const std::string token(response.at("data").at("session_token").as_string());
    EXPECT_TRUE(pairing->isValidToken(token));
    EXPECT_FALSE(response.at("data").as_object().contains("reason"));
    EXPECT_TRUE(session->isPaired());
}

TEST_F(ProtocolSessionTest, PairParamsOfTheWrongKindAreNone) {
    for (const char* params :
         {"null", "7", "[]", "\"x\"", R"({"password":7})", R"({"password":null})", "{}"}) {
        session = newSession();
        EXPECT_EQ(json(std::string(R"({"type":"pair","params":)") + params + "}").at("data").at("accepted"),
                  true)
            << params;
    }
    pairing->setPassword("x");
    session = newSession();
    EXPECT_EQ(json(R"({"type":"pair","params":{"password":7}})").at("data").at("accepted"), false);
}

TEST_F(ProtocolSessionTest, ARefusalIsAReplyAndLeavesThingsAsTheyAre) {
    pairing->setPassword("Secret");
    const std::string refused =
        R"({"type":"pair","req_id":1,"data":{"accepted":false,"reason":"incorrect password"}})";
    EXPECT_EQ(reply(R"({"type":"pair","req_id":1,"params":{"password":"secret"}})"), refused);
    EXPECT_FALSE(session->isPaired());
    EXPECT_EQ(json(R"({"type":"pair","params":{"password":"Secret"}})").at("data").at("accepted"), true);
    EXPECT_EQ(reply(R"({"type":"pair","req_id":1,"params":{"password":"no"}})"), refused);
    EXPECT_TRUE(session->isPaired());
}

TEST_F(ProtocolSessionTest, PairingAgainReplacesTheToken) {
    const auto first = json(R"({"type":"pair"})");
    const auto second = json(R"({"type":"pair"})");
    const std::string old(first.at("data").at("session_token").as_string());
    const std::string present(second.at("data").at("session_token").as_string());
    EXPECT_NE(old, present);
    EXPECT_FALSE(pairing->isValidToken(old));
    EXPECT_TRUE(pairing->isValidToken(present));
    session.reset();
    EXPECT_FALSE(pairing->isValidToken(present));
}

TEST_F(ProtocolSessionTest, ANewPasswordUnpairsNobody) {
    pair();
    pairing->setPassword("later");
    EXPECT_EQ(json(R"({"type":"sim_info"})").at("type"), "sim_info");
}

// Decoding

TEST_F(ProtocolSessionTest, RequestIdsAreEchoedExactly) {
    pair();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"7", "7"},
        {"7.0", "7"},
        {"1e2", "100"},
        {"0", "0"},
        {"-1", "-1"},
        {"9223372036854775807", "9223372036854775807"},
        {"-9223372036854775808", "-9223372036854775808"}};
    for (const auto& [sent, echoed] : cases) {
        EXPECT_EQ(
            reply(R"({"type":"sim_info","req_id":)" + sent + "}"),
            R"({"type":"sim_info","req_id":)" + echoed + R"(,"data":{"sim":"xplane","version":"unknown"}})");
    }
    const std::string without = R"({"type":"sim_info","data":{"sim":"xplane","version":"unknown"}})";
    EXPECT_EQ(reply(R"({"type":"sim_info"})"), without);
    EXPECT_EQ(reply(R"({"type":"sim_info","req_id":null})"), without);
}

TEST_F(ProtocolSessionTest, AnythingElseIsMalformed) {
    pair();
    const std::string deep = std::string(64, '[') + std::string(64, ']'); // within an object: 65 levels
    for (const std::string& text :
         {std::string("junk"), std::string(), std::string("[]"), std::string("\"pair\""), std::string("{}"),
          std::string(R"({"type":null})"), std::string(R"({"type":"sim_info","req_id":7.5})"),
          std::string(R"({"type":"sim_info","req_id":"7"})"),
          std::string(R"({"type":"sim_info","req_id":true})"),
          std::string(R"({"type":"sim_info","req_id":9223372036854775808})"),
          std::string(R"({"type":"sim_info","x":1e400})"), std::string(R"({"type":"sim_info"} x)"),
          std::string("\xEF\xBB\xBF"
                      R"({"type":"sim_info"})"),
          std::string(R"({"type":"sim_info","x":"\ud800"})"), R"({"type":"sim_info","x":)" + deep + "}"}) {
        EXPECT_EQ(reply(text), error("malformed message")) << text;
    }
}

TEST_F(ProtocolSessionTest, OfDuplicateKeysTheLastCounts) {
    pair();
    EXPECT_EQ(json(R"({"type":"x","req_id":1,"type":"sim_info","req_id":2})").at("req_id"), 2);
}

TEST_F(ProtocolSessionTest, ALongFrameIsAnsweredLikeAnyOther) {
    const std::string padding(200000, 'x');
    EXPECT_FALSE(handle(R"({"type":"sim_info","x":")" + padding + "\"}"));
    EXPECT_EQ(json(R"({"type":"pair","req_id":1,"x":")" + padding + "\"}").at("req_id"), 1);
    EXPECT_EQ(reply(R"({"type":"sim_info","x":")" + padding), error("malformed message"));
}

TEST_F(ProtocolSessionTest, AnUnknownTypeIsNamedAsReceived) {
    pair();
    EXPECT_EQ(reply(R"({"type":"after\"x\n","req_id":2})"),
              error(R"(unknown message type: after\"x\n)", "2"));
    EXPECT_EQ(reply(R"({"type":"Sim_Info"})"), error("unknown message type: Sim_Info"));
}

TEST_F(ProtocolSessionTest, MalformedBytesCountAsReplacementCharacters) {
    pair();
    EXPECT_EQ(reply("{\"type\":\"a\xFFz\xC3\"}"), error("unknown message type: a\uFFFDz\uFFFD"));
    const std::string padding(200000, '\xFF');
    EXPECT_EQ(reply("{\"type\":\"a\xFFz\",\"x\":\"" + padding + "\"}"),
              error("unknown message type: a\uFFFDz"));
}

// Requests

TEST_F(ProtocolSessionTest, MissingParamsAreNamed) {
    pair();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"load_flight", "load_flight requires a path"},
        {"load_script", "load_script requires triggers"},
        {"dataref_subscribe_values", "dataref_subscribe_values requires a datarefs array"},
        {"dataref_set_values", "dataref_set_values requires a datarefs array"},
        {"run_command", "run_command requires a name"},
        {"move_to_preserving_agl", "move_to_preserving_agl requires lat/lon"},
        {"apply_attitude", "apply_attitude requires pitch/bank/ias/throttle"}};
    for (const auto& [type, complaint] : cases) {
        for (const char* params :
             {"", R"(,"params":null)", R"(,"params":[])", R"(,"params":{})", R"(,"params":"x")"}) {
            const auto response = json(R"({"type":")" + type + R"(","req_id":9)" + params + "}");
            EXPECT_EQ(response.at("type"), "error") << type << params;
            EXPECT_EQ(response.at("req_id"), 9);
            const std::string message(response.at("data").at("message").as_string());
            EXPECT_EQ(message, "missingParams(\"" + complaint + "\")");
        }
    }
    EXPECT_TRUE(backend->calls.empty());
}

TEST_F(ProtocolSessionTest, RequestsReachTheSimulator) {
    pair();
    const std::string ok = R"("data":{"ok":true}})";
    EXPECT_EQ(reply(R"({"type":"load_flight","params":{"path":"/a.sit"}})"),
              R"({"type":"load_flight",)" + ok);
    EXPECT_EQ(reply(R"({"type":"run_command","req_id":1,"params":{"name":"sim/x"}})"),
              R"({"type":"run_command","req_id":1,)" + ok);
    EXPECT_EQ(reply(R"({"type":"move_to_preserving_agl","params":{"lat":47,"lon":8.5}})"),
              R"({"type":"move_to_preserving_agl",)" + ok);
    EXPECT_EQ(
        reply(
            R"({"type":"apply_attitude","params":{"pitch_deg":5,"bank_deg":-10,"ias_kts":90,"throttle":0.5}})"),
        R"({"type":"apply_attitude",)" + ok);
    EXPECT_EQ(
        reply(
            R"({"type":"dataref_set_values","params":{"datarefs":)"
            R"([{"name":"a","value":1},{"name":"b","value":2,"index":0},{"name":"c","value":3,"index":null}]}})"),
        R"({"type":"dataref_set_values",)" + ok);
    EXPECT_THAT(backend->calls,
                ElementsAre("loadFlight /a.sit", "runCommand sim/x", "moveToPreservingAgl 47.000000 8.500000",
                            "applyAttitude 5.000000 -10.000000 90.000000 0.500000", "setDataref a 1.000000",
                            "setDataref b[0] 2.000000", "setDataref c 3.000000"));
}

TEST_F(ProtocolSessionTest, FlightsAreListed) {
    pair();
    backend->flights.push_back(
        {"Pattern 1", "/s/Pattern 1.sit", Date{std::chrono::sys_days(std::chrono::days(11324))}});
    EXPECT_EQ(reply(R"({"type":"list_flights","req_id":4})"),
              R"({"type":"list_flights","req_id":4,"data":{"flights":)"
              R"([{"name":"Pattern 1","path":"\/s\/Pattern 1.sit","modified_at":86400}]}})");
}

TEST_F(ProtocolSessionTest, TheFirstFailingWriteStopsTheRest) {
    pair();
    backend->failures["setDataref"] = "unknownDataref(\"a\")";
    EXPECT_EQ(
        reply(
            R"({"type":"dataref_set_values","params":{"datarefs":[{"name":"a","value":1},{"name":"b","value":2}]}})"),
        error(R"(unknownDataref(\"a\"))"));
    EXPECT_THAT(backend->calls, ElementsAre("setDataref a 1.000000"));
}

TEST_F(ProtocolSessionTest, AFailureOfTheSimulatorIsOneErrorReply) {
    pair();
    backend->failures["listFlights"] = "situationsDirectoryNotConfigured";
    EXPECT_EQ(reply(R"({"type":"list_flights","req_id":5})"), error("situationsDirectoryNotConfigured", "5"));
    EXPECT_EQ(json(R"({"type":"sim_info"})").at("type"), "sim_info");
}

// Scripts

std::string scriptOf(const std::string& triggers) {
    return R"({"type":"load_script","req_id":1,"params":{"triggers":[)" + triggers + "]}}";
}

std::string trigger(const std::string& id, const std::string& kind, const std::string& condition) {
    return R"({"id":")" + id + R"(","condition_kind":")" + kind + R"(","condition":)" + condition +
           R"(,"action_kind":"say","action":{"text":"hi"}})";
}

TEST_F(ProtocolSessionTest, AScriptIsArmedInItsOrder) {
    pair();
    fixes["KSFO"] = {37.6, -122.4};
    const auto script = scriptOf(trigger("a", "reaches_fix", R"({"fix":"ksfo","within_nm":2})") + "," +
                                 trigger("b", "reaches_fix", R"({"fix":"nowhere","within_nm":2})") + "," +
                                 trigger("c", "after_start", R"({"seconds":30})"));
    EXPECT_EQ(reply(script), R"({"type":"load_script","req_id":1,"data":{"unresolved_fixes":["NOWHERE"]}})");
    const auto engine = loadedScript->current();
    ASSERT_TRUE(engine);
    ASSERT_EQ(engine->triggers().size(), 3U);
    const auto& first = engine->triggers()[0];
    EXPECT_EQ(first.id, "a");
    EXPECT_EQ(first.name, "");
    EXPECT_EQ(first.title(), "say");
    EXPECT_EQ(first.condition.fix, "ksfo");
    EXPECT_EQ(first.action.at("text"), JsonScalar{std::string("hi")});
    EXPECT_EQ(engine->triggers()[2].condition.seconds, 30.0);
}

TEST_F(ProtocolSessionTest, AnEmptyScriptReplacesTheLast) {
    pair();
    reply(scriptOf(trigger("a", "after_start", R"({"seconds":0})")));
    EXPECT_EQ(reply(scriptOf("")), R"({"type":"load_script","req_id":1,"data":{"unresolved_fixes":[]}})");
    EXPECT_TRUE(loadedScript->current()->triggers().empty());
}

TEST_F(ProtocolSessionTest, AnUnknownConditionKindLeavesTheLastScriptInForce) {
    pair();
    reply(scriptOf(trigger("a", "after_start", R"({"seconds":0})")));
    EXPECT_EQ(reply(scriptOf(trigger("b", "after_start", "{}") + "," + trigger("c", "after_landing", "{}"))),
              error(R"(unknownConditionKind(\"after_landing\"))", "1"));
    EXPECT_EQ(loadedScript->current()->triggers().at(0).id, "a");
}

TEST_F(ProtocolSessionTest, AScriptThatIsTooLargeLeavesTheLastInForce) {
    pair();
    reply(scriptOf(trigger("a", "after_start", R"({"seconds":0})")));
    const std::string tooLong(ProtocolLimits::idSize + 1, 'x');
    EXPECT_EQ(
        reply(scriptOf(trigger("b", "after_start", "{}") + "," + trigger(tooLong, "after_start", "{}"))),
        error(R"(limitExceeded(\"load_script takes at most 1024 bytes for an id, a fix or a kind\"))", "1"));
    EXPECT_EQ(loadedScript->current()->triggers().at(0).id, "a");
}

TEST_F(ProtocolSessionTest, ANewScriptForgetsWhatTheLastHadFired) {
    pair();
    const auto script = scriptOf(trigger("a", "after_start", R"({"seconds":0})"));
    reply(script);
    EXPECT_EQ(loadedScript->evaluate({}).size(), 1U);
    EXPECT_EQ(loadedScript->evaluate({}).size(), 0U);
    reply(script);
    EXPECT_EQ(loadedScript->evaluate({}).size(), 1U);
}

/// A navigation database in which one fix is found only when the test lets it.
struct SlowFix {
    std::promise<void> release;
    std::promise<void> asked;
    std::shared_future<void> released = release.get_future().share();

    std::function<bool()> isWanted;
    std::atomic<bool> asksWhetherItIsWanted = false;

    MakeFixResolver makeResolver() {
        return [this](std::function<bool()> isFirstWanted) {
            isWanted = std::move(isFirstWanted);
            return [this](const std::string& ident) -> std::optional<Coordinate> {
                if (ident == "SLOW") {
                    asked.set_value();
                    released.wait();
                    EXPECT_FALSE(asksWhetherItIsWanted && isWanted());
                }
                return std::nullopt;
            };
        };
    }
};

/// Two sessions, of which the first is loading a script that waits for its fix.
struct ScriptsSideBySideTest : ProtocolSessionTest {
    SlowFix slow;
    WorkerPool scriptWorkers{2}; // depends-on: slow
    std::shared_ptr<ProtocolSession> other = sessionWithSlowFix();
    std::optional<std::string> firstAnswer;

    std::shared_ptr<ProtocolSession> sessionWithSlowFix() {
        return std::make_shared<ProtocolSession>(ProtocolSession::Services{pairing, guard, backend, recording,
                                                                           loadedScript, slow.makeResolver(),
                                                                           names, workers, scriptWorkers});
    }

    ScriptsSideBySideTest() {
        session = sessionWithSlowFix();
        test::runTask(io, test::answerOf(other, R"({"type":"pair"})"));
        pair();
        const auto first = trigger("first", "reaches_fix", R"({"fix":"slow","within_nm":2})") + "," +
                           trigger("too", "reaches_fix", R"({"fix":"other","within_nm":2})");
        auto keep = [this](const std::exception_ptr&, std::optional<std::string> text) {
            firstAnswer = std::move(text);
        };
        boost::asio::co_spawn(io, test::answerOf(session, scriptOf(first)), std::move(keep));
        auto asked = slow.asked.get_future();
        auto isAsked = [&] { return asked.wait_for(std::chrono::seconds(0)) == std::future_status::ready; };
        EXPECT_TRUE(test::runUntil(io, isAsked));
    }

    void letTheFirstFinish() {
        slow.release.set_value();
        EXPECT_TRUE(test::runUntil(io, [&] { return firstAnswer.has_value(); }));
    }
};

TEST_F(ScriptsSideBySideTest, TheOneThatCameLaterWinsThoughTheEarlierTakesLonger) {
    const auto second = scriptOf(trigger("second", "after_start", R"({"seconds":0})"));
    EXPECT_EQ(test::runTask(io, test::answerOf(other, second)),
              R"({"type":"load_script","req_id":1,"data":{"unresolved_fixes":[]}})");
    EXPECT_FALSE(firstAnswer);
    letTheFirstFinish();
    EXPECT_EQ(firstAnswer,
              R"({"type":"load_script","req_id":1,"data":{"unresolved_fixes":["SLOW","OTHER"]}})");
    EXPECT_EQ(loadedScript->current()->triggers().at(0).id, "second");
}

TEST_F(ScriptsSideBySideTest, ALaterScriptThatFailsLeavesTheWayToTheEarlier) {
    test::runTask(io, test::answerOf(other, scriptOf(trigger("second", "after_landing", "{}"))));
    letTheFirstFinish();
    EXPECT_EQ(loadedScript->current()->triggers().at(0).id, "first");
}

TEST_F(ScriptsSideBySideTest, TheScriptOfAConnectionThatHasGoneDoesNotComeIntoForce) {
    session->end();
    letTheFirstFinish();
    EXPECT_FALSE(loadedScript->current());
    test::runTask(io, test::answerOf(other, scriptOf("")));
    EXPECT_TRUE(loadedScript->current());
}

TEST_F(ScriptsSideBySideTest, TheSearchForOneWhoHasHungUpIsGivenUp) {
    session->hangUp();
    slow.asksWhetherItIsWanted = true;
    letTheFirstFinish();
    EXPECT_EQ(firstAnswer, error(R"(connectionClosed(\"load_script\"))", "1"));
    EXPECT_FALSE(loadedScript->current());
}

TEST_F(ScriptsSideBySideTest, WhoHasHungUpGetsAScriptThatTakesNoLongSearch) {
    session->hangUp();
    letTheFirstFinish();
    EXPECT_EQ(loadedScript->current()->triggers().at(0).id, "first");
}

// Recording

TEST_F(ProtocolSessionTest, RecordingsAreStartedAndStopped) {
    pair();
    EXPECT_EQ(reply(R"({"type":"recording_start","req_id":1})"),
              R"({"type":"recording_start","req_id":1,"data":{"ok":true}})");
    EXPECT_TRUE(recording->isRecording());
    EXPECT_EQ(recording->generation(), 1);
    EXPECT_EQ(reply(R"({"type":"recording_start"})"), R"({"type":"recording_start","data":{"ok":true}})");
    EXPECT_EQ(recording->generation(), 2);
    EXPECT_EQ(reply(R"({"type":"recording_stop"})"), R"({"type":"recording_stop","data":{"ok":true}})");
    EXPECT_FALSE(recording->isRecording());
    EXPECT_EQ(reply(R"({"type":"recording_stop"})"), R"({"type":"recording_stop","data":{"ok":true}})");
}

TrackSample sampleAt(double elapsedSeconds) {
    TrackSample sample;
    sample.elapsedSeconds = elapsedSeconds;
    return sample;
}

TEST_F(ProtocolSessionTest, CatchingUpWorksBeforeDuringAndAfterARecording) {
    pair();
    EXPECT_EQ(reply(R"({"type":"catch_up","req_id":1})"),
              R"({"type":"catch_up","req_id":1,"data":{"samples":[],"fired":[]}})");
    recording->start();
    recording->recordSample(sampleAt(0.5));
    test::record(*recording, sampleAt(1), {"a"});
    const std::string all =
        R"({"type":"catch_up","data":{"samples":[{"elapsed_s":0.5,"alt_ft":0},{"elapsed_s":1,"alt_ft":0}],)"
        R"("fired":[{"trigger_id":"a","elapsed_s":1,"action_kind":"speak"}]}})";
    for (const char* params :
         {"", R"(,"params":null)", R"(,"params":{})", R"(,"params":7)",
          R"(,"params":{"since_elapsed_s":"1"})", R"(,"params":{"since_elapsed_s":null})"}) {
        EXPECT_EQ(reply(std::string(R"({"type":"catch_up")") + params + "}"), all) << params;
    }
    EXPECT_EQ(reply(R"({"type":"catch_up","params":{"since_elapsed_s":0.5}})"),
              R"({"type":"catch_up","data":{"samples":[{"elapsed_s":1,"alt_ft":0}],)"
              R"("fired":[{"trigger_id":"a","elapsed_s":1,"action_kind":"speak"}]}})");
    EXPECT_EQ(reply(R"({"type":"catch_up","params":{"since_elapsed_s":1}})"),
              R"({"type":"catch_up","data":{"samples":[],"fired":[]}})");
    recording->stop();
    EXPECT_EQ(reply(R"({"type":"catch_up"})"), all);
}

TEST_F(ProtocolSessionTest, CatchingUpGivesWhatStoodRecordedWhenItWasAskedFor) {
    pair();
    recording->start();
    recording->recordSample(sampleAt(1));
    // While the only worker is busy, the heartbeat goes on: a later sample without its triggers must not be
    // seen.
    std::promise<void> release;
    auto wait = [released = release.get_future().share()] { released.wait(); };
    boost::asio::co_spawn(io, workers.run(std::move(wait)), boost::asio::detached);
    std::optional<std::string> answer;
    const auto keep = [&](const std::exception_ptr&, std::optional<std::string> text) {
        answer = std::move(text);
    };
    boost::asio::co_spawn(io, test::answerOf(session, R"({"type":"catch_up"})"), keep);
    io.restart();
    io.poll();
    EXPECT_FALSE(answer);
    recording->recordSample(sampleAt(2));
    release.set_value();
    io.run();
    EXPECT_EQ(answer, R"({"type":"catch_up","data":{"samples":[{"elapsed_s":1,"alt_ft":0}],"fired":[]}})");
}

// Subscriptions

TEST_F(ProtocolSessionTest, SubscribingAnswersThePresentValues) {
    pair();
    backend->datarefs = {{"b", 2.5}, {"a", 1}};
    EXPECT_EQ(reply(R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":)"
                    R"([{"name":"b"},{"name":"a"},{"name":"b"}]}})"),
              R"({"type":"dataref_subscribe_values","req_id":1,"data":{"a":1,"b":2.5}})");
    EXPECT_THAT(backend->calls, ElementsAre("getDataref b", "getDataref a", "getDataref b"));
    EXPECT_EQ(push(), R"({"type":"dataref_subscribe_values","data":{"a":1,"b":2.5}})");
}

TEST_F(ProtocolSessionTest, APushOfValuesAtHandNeedsNoWork) {
    pair();
    backend->datarefs = {{"b", 2.5}, {"a", 1}};
    session->addSubscriptions({"b", "a"});
    backend->hasAllAtHand = true;
    auto push = session->buildSubscriptionPush();
    const auto* text = std::get_if<std::optional<std::string>>(&push);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(*text, R"({"type":"dataref_subscribe_values","data":{"a":1,"b":2.5}})");
    EXPECT_EQ(backend->count("getDataref a"), 0);
    backend->datarefs.erase("b");
    EXPECT_TRUE(std::holds_alternative<Task<std::optional<std::string>>>(session->buildSubscriptionPush()));
}

TEST_F(ProtocolSessionTest, AnEmptySubscriptionIsAnEmptyObject) {
    pair();
    EXPECT_EQ(reply(R"({"type":"dataref_subscribe_values","params":{"datarefs":[]}})"),
              R"({"type":"dataref_subscribe_values","data":{}})");
    EXPECT_FALSE(push());
}

TEST_F(ProtocolSessionTest, AFailedNameStaysSubscribedAndCostsThePushes) {
    pair();
    backend->datarefs = {{"good", 1}, {"later", 3}};
    EXPECT_EQ(reply(R"({"type":"dataref_subscribe_values","params":{"datarefs":)"
                    R"([{"name":"good"},{"name":"bad"},{"name":"later"}]}})"),
              error(R"(timeout(\"bad\"))"));
    EXPECT_THAT(backend->calls, ElementsAre("getDataref good", "getDataref bad"));
    EXPECT_THROW(push(), std::runtime_error);
    backend->datarefs["bad"] = 2;
    EXPECT_EQ(push(), R"({"type":"dataref_subscribe_values","data":{"bad":2,"good":1,"later":3}})");
}

TEST_F(ProtocolSessionTest, ANameThatIsTooLongIsRefusedWithTheWholeRequest) {
    pair();
    const std::string longest(ProtocolLimits::nameSize, 'x');
    const auto refused = error(R"(limitExceeded(\"a name may have 1024 bytes at most\"))");
    const auto named = [&](const std::string& name) { return R"({"name":")" + name + R"(","value":1})"; };
    const auto request = [](const std::string& type, const std::string& list) {
        return R"({"type":")" + type + R"(","params":{"datarefs":[)" + list + "]}}";
    };
    for (const char* type : {"dataref_subscribe_values", "dataref_set_values"})
        EXPECT_EQ(reply(request(type, named("good") + "," + named(longest + "y"))), refused);
    EXPECT_EQ(reply(R"({"type":"run_command","params":{"name":")" + longest + "y\"}}"), refused);
    EXPECT_TRUE(backend->calls.empty());
    EXPECT_FALSE(push());
    backend->datarefs = {{longest, 1}};
    EXPECT_EQ(reply(request("dataref_set_values", named(longest))),
              R"({"type":"dataref_set_values","data":{"ok":true}})");
}

TEST_F(ProtocolSessionTest, APathThatIsTooLongIsCutBeforeItIsLookedFor) {
    pair();
    const std::string longest(longestPath, 'x');
    reply(R"({"type":"load_flight","params":{"path":")" + longest + "y\"}}");
    reply(R"({"type":"load_flight","params":{"path":")" + longest.substr(1) + "\u00E9\"}}");
    EXPECT_THAT(backend->calls, ElementsAre("loadFlight " + longest, "loadFlight " + longest.substr(1)));
}

std::vector<std::string> numberedNames(std::size_t from, std::size_t count) {
    std::vector<std::string> result;
    for (std::size_t i = from; i < from + count; ++i)
        result.push_back("name/" + std::to_string(i));
    return result;
}

TEST_F(ProtocolSessionTest, ASessionSubscribesToSoManyNames) {
    using ProtocolLimits::namesASession;
    session->addSubscriptions(numberedNames(0, namesASession - 1));
    EXPECT_THROW(session->addSubscriptions(numberedNames(namesASession - 2, 3)), ProtocolLimitError);
    session->addSubscriptions(numberedNames(namesASession - 2, 2)); // of which it has one
    EXPECT_THROW(session->addSubscriptions({"one more"}), ProtocolLimitError);
    EXPECT_EQ(names->left(), ProtocolLimits::namesInAll - namesASession);
    session.reset();
    EXPECT_EQ(names->left(), ProtocolLimits::namesInAll);
}

TEST_F(ProtocolSessionTest, AllSessionsTogetherSubscribeToSoManyNames) {
    names = std::make_shared<Allowance>(5);
    const auto first = newSession();
    auto second = newSession();
    first->addSubscriptions({"a", "b", "c"});
    EXPECT_THROW(second->addSubscriptions({"a", "b", "c"}), ProtocolLimitError);
    second->addSubscriptions({"a", "b"});
    second.reset();
    first->addSubscriptions({"d", "e"});
    EXPECT_THROW(first->addSubscriptions({"f"}), ProtocolLimitError);
}

TEST_F(ProtocolSessionTest, TooManyNamesAreOneErrorAndTheConnectionStays) {
    pair();
    names = std::make_shared<Allowance>(1);
    session = newSession();
    pair();
    backend->datarefs = {{"a", 1}, {"b", 2}};
    EXPECT_EQ(
        reply(R"({"type":"dataref_subscribe_values","params":{"datarefs":[{"name":"a"},{"name":"b"}]}})"),
        error(R"(limitExceeded(\"all connections together may subscribe to 50000 datarefs at most\"))"));
    EXPECT_FALSE(push());
    EXPECT_EQ(reply(R"({"type":"dataref_subscribe_values","params":{"datarefs":[{"name":"a"}]}})"),
              R"({"type":"dataref_subscribe_values","data":{"a":1}})");
}

TEST_F(ProtocolSessionTest, SubscriptionsAddUpInOrder) {
    pair();
    backend->datarefs = {{"a", 1}, {"b", 2}, {"c", 3}};
    session->addSubscriptions({"c", "a", "c"});
    session->addSubscriptions({"b", "a"});
    EXPECT_EQ(push(), R"({"type":"dataref_subscribe_values","data":{"a":1,"b":2,"c":3}})");
}

TEST_F(ProtocolSessionTest, ARequestIsReadFromAmongMuchElseHoweverLong) {
    pair();
    const std::string junk = R"("junk":[)" + std::string(100'000, ' ') + R"({"type":"x"},1],)";
    EXPECT_EQ(reply("{" + junk + R"("params":{"name":"a","name":"b",)" + junk +
                    R"("x":1},"type":"x","type":"run_command","req_id":1})"),
              R"({"type":"run_command","req_id":1,"data":{"ok":true}})");
    EXPECT_EQ(backend->calls.back(), "runCommand b");
    EXPECT_EQ(reply("{" + junk + R"("type":"sim_info","req_id":[]})"), error("malformed message"));
    EXPECT_EQ(reply("{" + junk + R"("type":"sim_info")"), error("malformed message"));
    EXPECT_EQ(reply("{" + junk + R"("type":"nothing"})"), error("unknown message type: nothing"));
}

TEST_F(ProtocolSessionTest, AValueThatHasNoJsonFormFailsTheEncoding) {
    pair();
    backend->datarefs["a"] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(reply(R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[{"name":"a"}]}})"),
              failedToEncodeResponse);
    EXPECT_EQ(push(), failedToEncodeResponse);
}

TEST_F(ProtocolSessionTest, APushCanBeBuiltWhileARequestWaits) {
    pair();
    backend->datarefs["a"] = 1;
    session->addSubscriptions({"a"});
    backend->clock = &clock;
    std::optional<std::string> late;
    boost::asio::co_spawn(
        io,
        test::answerOf(session,
                       R"({"type":"dataref_subscribe_values","params":{"datarefs":[{"name":"missing"}]}})"),
        [&](const std::exception_ptr&, std::optional<std::string> text) { late = std::move(text); });
    clock.settle(io);
    EXPECT_EQ(clock.sleeping(), 1U);
    EXPECT_FALSE(late);
    backend->datarefs["missing"] = 2; // the waiting request takes it up when it looks again
    EXPECT_EQ(clock.run(io, pushOf(session)),
              R"({"type":"dataref_subscribe_values","data":{"a":1,"missing":2}})");
    clock.advance(io, std::chrono::seconds(1));
    EXPECT_EQ(late, R"({"type":"dataref_subscribe_values","data":{"missing":2}})");
}

} // namespace
} // namespace tarnly
