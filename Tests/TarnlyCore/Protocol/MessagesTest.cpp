#include "TarnlyCore/Protocol/Messages.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

template <typename T>
T decode(std::string_view text) {
    return decodeJson<T>(parseJson(text));
}

TEST(Messages, ASampleWithNothingOptionalHasTwoKeys) {
    EXPECT_EQ(encodeJson(TrackSample{}), R"({"elapsed_s":0,"alt_ft":0})");
}

TEST(Messages, AFullSampleHasItsKeysInOrder) {
    TrackSample sample{1.5,  47.25, 8.5,  1200.5, 300.25, true, {{0.5, 0.25}}, {{1}}, std::vector<double>(),
                       0.25, 1,     -3.5, 2,      false};
    const auto text = encodeJson(sample);
    EXPECT_EQ(text,
              R"({"elapsed_s":1.5,"lat":47.25,"lon":8.5,"alt_ft":1200.5,"agl_ft":300.25,"gear_down":true,)"
              R"("throttle_ratio":[0.5,0.25],"mixture_ratio":[1],"prop_ratio":[],"flap_ratio":0.25,)"
              R"("gear_ratio":1,"bank_deg":-3.5,"pitch_deg":2,"autopilot_on":false})");
    EXPECT_EQ(decode<TrackSample>(text), sample);
}

TEST(Messages, AFiredEventHasThreeKeys) {
    const FiredTriggerEvent event{"t/1", 2.5, "say"};
    EXPECT_EQ(encodeJson(event), R"({"trigger_id":"t\/1","elapsed_s":2.5,"action_kind":"say"})");
    EXPECT_EQ(decode<FiredTriggerEvent>(encodeJson(event)), event);
}

TEST(Messages, TheEnvelopeReadsParamsAlone) {
    EXPECT_EQ(decode<Envelope<RunCommandRequest>>(R"({"type":5,"params":{"name":"a"}})").params,
              RunCommandRequest{"a"});
    EXPECT_FALSE(decode<Envelope<RunCommandRequest>>("{}").params);
    EXPECT_FALSE(decode<Envelope<RunCommandRequest>>(R"({"params":null})").params);
    EXPECT_THROW(decode<Envelope<RunCommandRequest>>(R"({"params":{}})"), JsonError);
}

TEST(Messages, ScalarsDecodeByTheirOwnKind) {
    EXPECT_EQ(decode<JsonScalar>("\"12\""), JsonScalar{std::string("12")});
    EXPECT_EQ(decode<JsonScalar>("12"), JsonScalar{12.0});
    EXPECT_EQ(decode<JsonScalar>("true"), JsonScalar{true});
    EXPECT_EQ(decode<JsonScalar>("null"), JsonScalar{});
    for (const char* text : {"[]", "{}"}) {
        try {
            decode<JsonScalar>(text);
            FAIL() << text;
        } catch (const JsonError& error) {
            EXPECT_STREQ(error.what(), "unsupported JSON value");
        }
    }
}

TEST(Messages, ScalarsEncodeBare) {
    EXPECT_EQ(encodeJson(std::vector<JsonScalar>{{std::string("a")}, {1.5}, {false}, {}}),
              R"(["a",1.5,false,null])");
}

TEST(Messages, ATriggerNeedsAllItsKeys) {
    const auto trigger = decode<ScriptTrigger>(
        R"({"id":"a","condition_kind":"after_start","condition":{"seconds":3,"x":null},)"
        R"("action_kind":"say","action":{"text":"hi"}})");
    EXPECT_EQ(trigger.condition.at("seconds"), JsonScalar{3.0});
    EXPECT_EQ(trigger.condition.at("x"), JsonScalar{});
    EXPECT_THROW(decode<ScriptTrigger>(R"({"id":"a","condition_kind":"b","condition":{},"action_kind":"c"})"),
                 JsonError);
    EXPECT_THROW(decode<ScriptTrigger>(
                     R"({"id":"a","condition_kind":"b","condition":{"x":[]},"action_kind":"c","action":{}})"),
                 JsonError);
}

TEST(Messages, DatesAreSecondsSince2001WithFraction) {
    using namespace std::chrono;
    const Date date{sys_days(2001y / January / 2) + milliseconds(250)};
    EXPECT_EQ(encodeJson(std::vector<Date>{date}), "[86400.25]");
    EXPECT_EQ(decode<Date>("86400.25"), date);
    const Date before{sys_days(2000y / December / 31)};
    EXPECT_EQ(encodeJson(std::vector<Date>{before}), "[-86400]");
}

} // namespace
} // namespace tarnly
