#include "TarnlySimulator/Api/HttpApi.hpp"

#include <gtest/gtest.h>

#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using test::commandId;
using test::datarefId;
using test::landingLightsDataref;
using test::numberOf;

constexpr auto toggle = "sim/lights/landing_lights_toggle";

class HttpApiTest : public testing::Test {
  protected:
    HttpResponse send(const std::string& method, const std::string& target, const std::string& body = "") {
        HttpRequest request;
        request.method = method;
        request.target = target;
        request.body = body;
        return http.answer(request, false).value();
    }

    HttpResponse get(const std::string& target) { return send("GET", target); }

    HttpResponse activate(const std::string& body, const char* command = toggle) {
        return send("POST", "/api/v2/command/" + std::to_string(commandId(world, command)) + "/activate",
                    body);
    }

    std::string valueTarget(const char* name) {
        return "/api/v2/datarefs/" + std::to_string(datarefId(world, name)) + "/value";
    }

    static std::string codeOf(const HttpResponse& response) {
        return parseJson(response.body).at("error_code").as_string().c_str();
    }

    World world{test::standInOptions()};
    HttpApi http{world};
};

TEST_F(HttpApiTest, TellsItsCapabilities) {
    const auto response = get("/api/capabilities");
    EXPECT_EQ(response.status, 200u);
    EXPECT_EQ(response.contentType, "application/json");
    EXPECT_EQ(response.body, R"({"api":{"versions":["v1","v2","v3"]},"x-plane":{"version":"12.4.0"}})");
}

TEST_F(HttpApiTest, ServesTheCataloguesInEveryVersion) {
    for (const char* version : {"v1", "v2", "v3"}) {
        const auto datarefs = get(std::string("/api/") + version + "/datarefs");
        EXPECT_EQ(datarefs.status, 200u);
        EXPECT_EQ(parseJson(datarefs.body).at("data").as_array().size(), test::shownDatarefs(world));
    }
    const auto commands = get("/api/v2/commands");
    EXPECT_EQ(parseJson(commands.body).at("data").as_array().size(), world.commands().entries().size());
}

TEST_F(HttpApiTest, FiltersByNameAndCounts) {
    const auto filtered = parseJson(get(std::string("/api/v2/datarefs?filter[name]=") + landingLightsDataref +
                                        "&filter%5Bname%5D=sim/none")
                                        .body);
    ASSERT_EQ(filtered.at("data").as_array().size(), 1u);
    EXPECT_EQ(filtered.at("data").at(0).at("name"), landingLightsDataref);
    const auto command = parseJson(get(std::string("/api/v2/commands?filter[name]=") + toggle).body);
    EXPECT_EQ(command.at("data").at(0).at("id"), commandId(world, toggle));
    EXPECT_EQ(get("/api/v2/datarefs/count").body,
              R"({"data":)" + std::to_string(test::shownDatarefs(world)) + "}");
    EXPECT_EQ(get("/api/v2/commands/count").body,
              R"({"data":)" + std::to_string(world.commands().entries().size()) + "}");
}

TEST_F(HttpApiTest, TellsTheVersionThatItIsGiven) {
    auto options = test::standInOptions();
    options.version = "12.1.4-b\"1\"";
    World other(options);
    HttpRequest request;
    request.target = "/api/capabilities";
    const auto answer = parseJson(HttpApi(other).answer(request, false).value().body);
    EXPECT_EQ(answer.at("x-plane").at("version").as_string(), options.version);
}

TEST_F(HttpApiTest, AnOldVersionHasItsOldInterfaceAlone) {
    world.quirks.tooOld = true;
    for (const char* path : {"/api/capabilities", "/api/v2/datarefs", "/api/v3/commands"}) {
        EXPECT_EQ(get(path).status, 404u) << path;
        EXPECT_EQ(get(path).contentType, "text/html") << path;
    }
    EXPECT_EQ(get("/api/v1/datarefs/count").status, 200u);
    HttpRequest upgrade;
    upgrade.target = "/api/v2";
    EXPECT_EQ(http.answer(upgrade, true).value().status, 404u);
}

TEST_F(HttpApiTest, DisabledTrafficIsRefusedInJsonOrInPlainText) {
    world.quirks.trafficDisabled = true;
    EXPECT_EQ(get("/api/capabilities").status, 403u);
    EXPECT_EQ(codeOf(get("/api/v2/datarefs")), "incoming_traffic_disabled");
    world.quirks.trafficDisabledPlain = true;
    EXPECT_EQ(get("/api/v2/datarefs").status, 403u);
    EXPECT_EQ(get("/api/v2/datarefs").contentType, "text/plain");
}

TEST_F(HttpApiTest, ARefusedHandshakeRefusesNothingElse) {
    HttpRequest upgrade;
    upgrade.target = "/api/v2";
    EXPECT_FALSE(http.answer(upgrade, true).has_value());
    world.quirks.handshakeRefused = true;
    EXPECT_EQ(http.answer(upgrade, true).value().status, 500u);
    EXPECT_EQ(get("/api/capabilities").status, 200u);
}

TEST_F(HttpApiTest, AnUnknownPathIsAPageAndNotJson) {
    for (const char* path :
         {"/", "/api", "/api/v2", "/api/v2/", "/api/v4/datarefs", "/api/v2/nothing", "/api/v2/datarefs/",
          "/api/v2/command/5/activate", "/api/v2/datarefs/1/2/3", "/x?filter[name]=y", "?"}) {
        const auto response = get(path);
        EXPECT_EQ(response.status, 404u) << path;
        EXPECT_EQ(response.contentType, "text/html") << path;
        EXPECT_TRUE(response.body.starts_with("<!DOCTYPE html>")) << path;
    }
    EXPECT_EQ(send("DELETE", "/api/v2/datarefs").status, 404u);
}

TEST_F(HttpApiTest, ReadsAndWritesSingleValues) {
    EXPECT_EQ(get(valueTarget(landingLightsDataref)).body, R"({"data":0})");
    EXPECT_EQ(send("PATCH", valueTarget(landingLightsDataref), R"({"data":1})").status, 200u);
    EXPECT_EQ(get(valueTarget(landingLightsDataref)).body, R"({"data":1})");
    const auto throttle = valueTarget("sim/cockpit2/engine/actuators/throttle_ratio");
    EXPECT_EQ(send("PATCH", throttle, R"({"data":[0.5,0.5]})").status, 200u);
    EXPECT_EQ(send("PATCH", throttle + "?index=1", R"({"data":0.25})").status, 200u);
    EXPECT_TRUE(get(throttle).body.starts_with(R"({"data":[0.5,0.25,0,)"));
    EXPECT_EQ(get(valueTarget("standin/odd/infinite")).body, R"({"data":1e+9999})");
    EXPECT_EQ(get(valueTarget("standin/odd/not_a_number")).body, R"({"data":null})");
}

TEST_F(HttpApiTest, RefusesUnfitValuesAndIds) {
    EXPECT_EQ(codeOf(get("/api/v2/datarefs/1/value")), "invalid_dataref_id");
    EXPECT_EQ(codeOf(get("/api/v2/datarefs/x/value")), "invalid_dataref_id");
    EXPECT_EQ(codeOf(send("PATCH", valueTarget(landingLightsDataref), "{")), "invalid_body");
    EXPECT_EQ(codeOf(send("PATCH", valueTarget(landingLightsDataref), "{}")), "invalid_body");
    EXPECT_EQ(codeOf(send("PATCH", valueTarget(landingLightsDataref), R"({"data":"on"})")), "invalid_value");
    EXPECT_EQ(codeOf(send("PATCH", valueTarget(landingLightsDataref) + "?index=x", R"({"data":1})")),
              "invalid_index");
    EXPECT_EQ(send("PATCH", valueTarget("sim/time/paused"), R"({"data":1})").status, 403u);
}

TEST_F(HttpApiTest, ActivatesACommandForADuration) {
    const auto response = activate(R"({"duration":0})");
    EXPECT_EQ(response.status, 200u);
    EXPECT_EQ(response.body, "null");
    EXPECT_EQ(numberOf(world, landingLightsDataref), 1);
}

TEST_F(HttpApiTest, InsistsOnADurationUnlessToldOtherwise) {
    for (const char* body : {"", "{}"}) {
        EXPECT_EQ(activate(body).status, 400u);
        EXPECT_EQ(codeOf(activate(body)), "duration_missing");
    }
    EXPECT_EQ(numberOf(world, landingLightsDataref), 0);
    world.quirks.durationRequired = false;
    EXPECT_EQ(activate("").status, 200u);
    EXPECT_EQ(numberOf(world, landingLightsDataref), 1);
}

TEST_F(HttpApiTest, RefusesUnfitActivations) {
    EXPECT_EQ(codeOf(activate("duration=0")), "invalid_body");
    EXPECT_EQ(codeOf(activate("[]")), "invalid_body");
    for (const char* duration : {"-0.1", "10.1", "null", "\"1\"", "true"})
        EXPECT_EQ(codeOf(activate(std::string(R"({"duration":)") + duration + "}")), "invalid_duration")
            << duration;
    const auto unknown = send("POST", "/api/v2/command/1/activate", R"({"duration":0})");
    EXPECT_EQ(unknown.status, 404u);
    EXPECT_EQ(codeOf(unknown), "invalid_command_id");
    EXPECT_EQ(codeOf(send("POST", "/api/v2/command/99999999999999999999/activate", "")),
              "invalid_command_id");
}

TEST_F(HttpApiTest, UpgradesAreForTheInterfacesOwnAddress) {
    HttpRequest request;
    for (const char* target : {"/api/v1", "/api/v2", "/api/v3", "/api/v2?x=y"}) {
        request.target = target;
        EXPECT_FALSE(http.answer(request, true).has_value()) << target;
    }
    for (const char* target : {"/", "/api", "/api/v4", "/api/v2/datarefs", "/api/capabilities"}) {
        request.target = target;
        const auto response = http.answer(request, true);
        ASSERT_TRUE(response.has_value()) << target;
        EXPECT_EQ(response->status, 404u) << target;
    }
}

TEST_F(HttpApiTest, DisabledTrafficIsRefusedEverywhere) {
    world.quirks.trafficDisabled = true;
    HttpRequest request;
    for (const char* target : {"/api/capabilities", "/api/v2/datarefs", "/api/v2", "/nothing"}) {
        request.target = target;
        for (const bool isUpgrade : {false, true}) {
            const auto response = http.answer(request, isUpgrade);
            ASSERT_TRUE(response.has_value());
            EXPECT_EQ(response->status, 403u);
            EXPECT_EQ(codeOf(*response), "incoming_traffic_disabled");
        }
    }
}

TEST_F(HttpApiTest, TheMainMenuHasNoDatarefsButCommands) {
    world.quirks.mainMenu = true;
    EXPECT_EQ(get("/api/v2/datarefs").body, R"({"data":[]})");
    EXPECT_EQ(get("/api/v2/datarefs/count").body, R"({"data":0})");
    EXPECT_EQ(get(valueTarget(landingLightsDataref)).status, 404u);
    EXPECT_EQ(codeOf(get(std::string("/api/v2/datarefs?filter[name]=") + landingLightsDataref)),
              "invalid_dataref_name");
    EXPECT_GT(parseJson(get("/api/v2/commands").body).at("data").as_array().size(), 100u);
}

} // namespace
} // namespace tarnly::simulator
