#include "TarnlySimulator/Api/Control.hpp"

#include <gtest/gtest.h>

#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using namespace std::chrono_literals;

class ControlTest : public testing::Test {
  protected:
    HttpResponse send(const std::string& method, const std::string& body = "") {
        HttpRequest request;
        request.method = method;
        request.target = "/control";
        request.body = body;
        return control.answer(request);
    }

    int dropped = 0;
    int restarted = 0;
    World world{test::standInOptions()};
    Orders orders{world, {[this] { ++dropped; }, [this](const Restart&) { ++restarted; }}};
    Control control{world, orders};
};

TEST_F(ControlTest, FlipsEveryQuirkAndReportsIt) {
    for (const QuirkSwitch& quirk : quirkSwitches()) {
        for (const bool on : {true, false}) {
            const std::string body =
                std::string(R"({"quirk":")") + quirk.name + R"(","on":)" + (on ? "true" : "false") + "}";
            const auto response = send("POST", body);
            EXPECT_EQ(response.status, 200u);
            EXPECT_EQ(world.quirks.*quirk.on, on) << quirk.name;
            EXPECT_EQ(parseJson(response.body).at("quirks").at(quirk.name), on) << quirk.name;
        }
    }
}

TEST_F(ControlTest, ReportsThePhase) { EXPECT_EQ(parseJson(send("GET").body).at("phase"), "cruise"); }

TEST_F(ControlTest, SlownessTakesItsDelay) {
    send("POST", R"({"quirk":"slow","on":true,"milliseconds":350})");
    EXPECT_TRUE(world.quirks.slow);
    EXPECT_EQ(world.quirks.slowBy, 350ms);
}

TEST_F(ControlTest, DropsAndRestarts) {
    EXPECT_EQ(send("POST", R"({"quirk":"drop"})").status, 200u);
    EXPECT_EQ(send("POST", R"({"quirk":"restart","on":true})").status, 200u);
    EXPECT_EQ(dropped, 1);
    EXPECT_EQ(restarted, 1);
}

TEST_F(ControlTest, TakesEveryOrderAsALine) {
    EXPECT_EQ(send("POST", R"({"order":"restart swapped"})").status, 200u);
    EXPECT_EQ(restarted, 1);
    EXPECT_EQ(parseJson(send("POST", R"({"order":"main_menu on"})").body).at("quirks").at("main-menu"), true);
    EXPECT_EQ(send("POST", R"({"order":"dance"})").status, 400u);
}

TEST_F(ControlTest, RefusesWhatItDoesNotUnderstand) {
    EXPECT_EQ(send("POST", R"({"quirk":"unknown","on":true})").status, 404u);
    for (const char* body :
         {"", "{", "[]", "{}", R"({"quirk":1})", R"({"quirk":"slow"})", R"({"quirk":"slow","on":1})",
          R"({"quirk":"slow","on":true,"milliseconds":-1})"}) {
        EXPECT_EQ(send("POST", body).status, 400u) << body;
    }
    EXPECT_EQ(send("DELETE").status, 405u);
    EXPECT_FALSE(world.quirks.slow);
}

} // namespace
} // namespace tarnly::simulator
