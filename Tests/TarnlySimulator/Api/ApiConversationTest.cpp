#include "TarnlySimulator/Api/ApiConversation.hpp"

#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using test::commandId;
using test::datarefId;
using test::landingLightsDataref;
using test::latitudeDataref;
using test::numberOf;

constexpr auto throttleDataref = "sim/cockpit2/engine/actuators/throttle_ratio";
constexpr auto heightDataref = "sim/flightmodel/position/y_agl";
const std::string good = R"({"req_id":1,"type":"result","success":true})";

class ApiConversationTest : public testing::Test {
  protected:
    std::string idOf(std::string_view name) { return std::to_string(datarefId(world, name)); }

    std::string entry(std::string_view name, const std::string& more = "") {
        return R"({"id":)" + idOf(name) + more + "}";
    }

    std::vector<std::string> request(const std::string& type, const std::string& parameters) {
        return conversation.answer(R"({"req_id":1,"type":")" + type + R"(","params":)" + parameters + "}");
    }

    std::vector<std::string> subscribe(const std::string& entries) {
        return request("dataref_subscribe_values", R"({"datarefs":[)" + entries + "]}");
    }

    std::vector<std::string> set(const std::string& entries) {
        return request("dataref_set_values", R"({"datarefs":[)" + entries + "]}");
    }

    /// The keys of the next update.
    std::set<std::string> told() {
        std::set<std::string> out;
        const auto update = conversation.update();
        if (update.empty()) return out;
        const auto json = parseJson(update, NonFinite::kept);
        EXPECT_EQ(json.at("type"), "dataref_update_values");
        for (const auto& [key, value] : json.at("data").as_object())
            out.insert(key);
        return out;
    }

    /// The error code of the only result.
    static std::string codeOf(const std::vector<std::string>& results) {
        if (results.size() != 1) return std::to_string(results.size()) + " results";
        const auto json = parseJson(results.front());
        EXPECT_EQ(json.at("type"), "result");
        if (json.at("success").as_bool()) return "success";
        EXPECT_FALSE(json.at("error_message").as_string().empty());
        return json.at("error_code").as_string().c_str();
    }

    World world{test::standInOptions()};
    ApiConversation conversation{world};
};

using Keys = std::set<std::string>;

TEST_F(ApiConversationTest, SubscribingIsAnsweredAndTheFirstUpdateIsComplete) {
    EXPECT_EQ(subscribe(entry(landingLightsDataref) + "," + entry(throttleDataref)), std::vector{good});
    EXPECT_EQ(told(), (Keys{idOf(landingLightsDataref), idOf(throttleDataref)}));
}

TEST_F(ApiConversationTest, UpdatesTellOnlyWhatHasChanged) {
    subscribe(entry(landingLightsDataref) + "," + entry(latitudeDataref));
    told();
    EXPECT_EQ(conversation.update(), "");
    world.advance(0.1);
    EXPECT_EQ(told(), Keys{idOf(latitudeDataref)});
    test::writeNumber(world, landingLightsDataref, 1);
    const std::string id = idOf(landingLightsDataref);
    EXPECT_EQ(conversation.update(), R"({"data":{")" + id + R"(":1},"type":"dataref_update_values"})");
}

TEST_F(ApiConversationTest, SubscribingAgainTellsTheValueAgain) {
    subscribe(entry(landingLightsDataref));
    told();
    subscribe(entry(landingLightsDataref));
    EXPECT_EQ(told(), Keys{idOf(landingLightsDataref)});
}

TEST_F(ApiConversationTest, ASubscriptionToNothingSucceeds) {
    EXPECT_EQ(subscribe(""), std::vector{good});
    EXPECT_EQ(conversation.update(), "");
}

TEST_F(ApiConversationTest, OneBadIdFailsTheWholeSubscription) {
    EXPECT_EQ(codeOf(subscribe(R"({"id":1},)" + entry(landingLightsDataref))), "invalid_dataref_id");
    EXPECT_EQ(told(), Keys{});
}

TEST_F(ApiConversationTest, WithAResultForEachTheOthersAreSubscribed) {
    world.quirks.resultPerDataref = true;
    EXPECT_EQ(subscribe(R"({"id":1},)" + entry(landingLightsDataref)).size(), 2u);
    EXPECT_EQ(told(), Keys{idOf(landingLightsDataref)});
}

TEST_F(ApiConversationTest, UnsubscribedValuesAreToldNoMore) {
    subscribe(entry(landingLightsDataref) + "," + entry(throttleDataref));
    EXPECT_EQ(request("dataref_unsubscribe_values", R"({"datarefs":[)" + entry(throttleDataref) + "]}"),
              std::vector{good});
    EXPECT_EQ(told(), Keys{idOf(landingLightsDataref)});
    subscribe(entry(throttleDataref));
    EXPECT_EQ(request("dataref_unsubscribe_values", R"({"datarefs":"all"})"), std::vector{good});
    EXPECT_EQ(told(), Keys{});
}

TEST_F(ApiConversationTest, NonFiniteValuesAreToldAsTheyArePrinted) {
    world.quirks.nonFinite = true;
    subscribe(entry(heightDataref));
    EXPECT_EQ(conversation.update(),
              R"({"data":{")" + idOf(heightDataref) + R"(":1e+9999},"type":"dataref_update_values"})");
    EXPECT_EQ(conversation.update(), "");
}

TEST_F(ApiConversationTest, SettingAScalarAnElementAndAWholeArray) {
    EXPECT_EQ(set(entry(landingLightsDataref, R"(,"value":1)")), std::vector{good});
    EXPECT_EQ(numberOf(world, landingLightsDataref), 1);
    EXPECT_EQ(set(entry(throttleDataref, R"(,"value":0.25)")), std::vector{good});
    EXPECT_EQ(set(entry(throttleDataref, R"(,"value":0.75,"index":0)")), std::vector{good});
    const auto levers = std::get<std::vector<double>>(test::valueOf(world, throttleDataref));
    EXPECT_EQ(levers.at(0), 0.75);
    EXPECT_EQ(levers.at(1), 0.25);
}

TEST_F(ApiConversationTest, ReadOnlyDatarefsAreRefused) {
    EXPECT_EQ(codeOf(set(entry(heightDataref, R"(,"value":1)"))), "dataref_is_readonly");
    EXPECT_EQ(codeOf(set(entry(throttleDataref, R"(,"value":1,"index":16)"))), "invalid_index");
}

TEST_F(ApiConversationTest, OneResultForEachDatarefOnRequest) {
    world.quirks.resultPerDataref = true;
    const auto results =
        set(entry(landingLightsDataref, R"(,"value":1)") + "," + entry(heightDataref, R"(,"value":1)"));
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0], good);
    EXPECT_EQ(parseJson(results[1]).at("req_id"), 1);
    EXPECT_EQ(parseJson(results[1]).at("success"), false);
}

TEST_F(ApiConversationTest, CommandsCanBeActivated) {
    const auto id = std::to_string(commandId(world, "sim/lights/landing_lights_toggle"));
    const auto activate = [&](const std::string& more) {
        return codeOf(request("command_set_is_active", R"({"commands":[{"id":)" + id + more + "}]}"));
    };
    EXPECT_EQ(activate(R"(,"is_active":true,"duration":0.5)"), "success");
    EXPECT_EQ(numberOf(world, landingLightsDataref), 1);
    EXPECT_EQ(activate(R"(,"is_active":false)"), "success");
    EXPECT_EQ(numberOf(world, landingLightsDataref), 1);
    EXPECT_EQ(activate(R"(,"is_active":true,"duration":11)"), "invalid_duration");
    EXPECT_EQ(activate(""), "invalid_body");
}

TEST_F(ApiConversationTest, ValuesThatStopAreKeptBack) {
    world.quirks.valuesStop = true;
    EXPECT_EQ(subscribe(entry(landingLightsDataref)), std::vector{good});
    EXPECT_EQ(conversation.update(), "");
    world.quirks.valuesStop = false;
    EXPECT_EQ(told(), Keys{idOf(landingLightsDataref)});
}

TEST_F(ApiConversationTest, EarlierValuesGetStuckOnRequest) {
    subscribe(entry(latitudeDataref));
    told();
    world.quirks.stuck = true;
    subscribe(entry(landingLightsDataref));
    world.advance(1);
    EXPECT_EQ(told(), Keys{idOf(landingLightsDataref)});
    subscribe(entry(latitudeDataref));
    EXPECT_EQ(told(), Keys{idOf(latitudeDataref)});
}

TEST_F(ApiConversationTest, NothingIsToldAtTheMainMenu) {
    subscribe(entry(landingLightsDataref));
    world.quirks.mainMenu = true;
    EXPECT_EQ(conversation.update(), "");
    EXPECT_EQ(codeOf(subscribe(entry(latitudeDataref))), "invalid_dataref_id");
}

TEST_F(ApiConversationTest, MalformedRequestsGetAResult) {
    const std::pair<const char*, const char*> requests[] = {
        {"", "invalid_json"},
        {"{", "invalid_json"},
        {R"({"req_id":1e999})", "invalid_json"},
        {"[1]", "invalid_body"},
        {"{}", "invalid_req_id"},
        {R"({"req_id":"1"})", "invalid_req_id"},
        {R"({"req_id":1})", "invalid_body"},
        {R"({"req_id":1,"type":3,"params":{}})", "invalid_body"},
        {R"({"req_id":1,"type":"dance","params":{}})", "invalid_type"},
        {R"({"req_id":1,"type":"dataref_set_values"})", "invalid_body"},
        {R"({"req_id":1,"type":"dataref_set_values","params":[]})", "invalid_body"},
        {R"({"req_id":1,"type":"dataref_set_values","params":{"datarefs":{}}})", "invalid_body"},
        {R"({"req_id":1,"type":"dataref_set_values","params":{"datarefs":[1]}})", "invalid_body"},
        {R"({"req_id":1,"type":"dataref_set_values","params":{"datarefs":[{}]}})", "invalid_body"},
        {R"({"req_id":1,"type":"dataref_set_values","params":{"datarefs":[{"id":1.5,"value":1}]}})",
         "invalid_body"},
        {R"({"req_id":1,"type":"dataref_subscribe_values","params":{"datarefs":[{"id":null}]}})",
         "invalid_body"},
    };
    for (const auto& [text, code] : requests)
        EXPECT_EQ(codeOf(conversation.answer(text)), code) << text;
}

TEST_F(ApiConversationTest, ARefusalNamesItsRequest) {
    const auto results = conversation.answer(R"({"req_id":77,"type":"dance","params":{}})");
    EXPECT_EQ(parseJson(results.at(0)).at("req_id"), 77);
    EXPECT_FALSE(parseJson(conversation.answer("{").at(0)).as_object().contains("req_id"));
}

} // namespace
} // namespace tarnly::simulator
