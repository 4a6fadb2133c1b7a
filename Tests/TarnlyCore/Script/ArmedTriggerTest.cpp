#include "TarnlyCore/Script/Trigger.hpp"

#include <gtest/gtest.h>

#include "TarnlyCore/Script/Triggers.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

TEST(ArmedTrigger, TitleIsTheNameOrElseTheActionKind) {
    auto trigger = test::armed("a", {});
    EXPECT_EQ(trigger.title(), "say");
    trigger.name = "Flaps";
    EXPECT_EQ(trigger.title(), "Flaps");
}

TEST(ArmedTrigger, IsWrittenAndReadUnderTheNamesOfItsFields) {
    auto trigger = test::armed("a", test::afterStart(2));
    trigger.name = "Flaps";
    trigger.action = {{"flag", {true}}, {"level", {0.5}}, {"nothing", {}}, {"text", {"up"}}};
    constexpr auto text =
        R"({"id":"a","name":"Flaps","condition":{"kind":"afterStart","seconds":2},"actionKind":"say",)"
        R"("action":{"flag":true,"level":0.5,"nothing":null,"text":"up"}})";
    EXPECT_EQ(encodeJson(trigger), text);
    EXPECT_EQ(decodeJson<ArmedTrigger>(parseJson(text)), trigger);
}

TEST(ArmedTrigger, EveryFieldIsRequired) {
    constexpr auto whole =
        R"({"id":"a","name":"","condition":{"kind":"afterStart"},"actionKind":"say","action":{}})";
    EXPECT_NO_THROW(decodeJson<ArmedTrigger>(parseJson(whole)));
    for (const auto* key : {"id", "name", "condition", "actionKind", "action"}) {
        auto json = parseJson(whole);
        json.as_object().erase(key);
        EXPECT_THROW(decodeJson<ArmedTrigger>(json), JsonError) << key;
    }
}

} // namespace
} // namespace tarnly
