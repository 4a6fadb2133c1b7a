#include "TarnlyCore/Script/Trigger.hpp"

#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

using Kind = TriggerConditionKind;

TriggerCondition decoded(std::string_view text) { return decodeJson<TriggerCondition>(parseJson(text)); }

TEST(TriggerConditionKind, IsWrittenAndReadByItsName) {
    const std::pair<Kind, std::string> names[] = {
        {Kind::reachesFix, "\"reachesFix\""},           {Kind::crossesAgl, "\"crossesAgl\""},
        {Kind::crossesAltitude, "\"crossesAltitude\""}, {Kind::afterGearDown, "\"afterGearDown\""},
        {Kind::afterStart, "\"afterStart\""},           {Kind::afterTrigger, "\"afterTrigger\""}};
    for (const auto& [kind, name] : names) {
        EXPECT_EQ(encodeJson(kind), name);
        EXPECT_EQ(decodeJson<Kind>(parseJson(name)), kind);
    }
}

TEST(TriggerConditionKind, EachIsDescribedForThoseWhoWriteScripts) {
    const auto page = test::contentOf(std::filesystem::path(TARNLY_DOCS) / "scripts.md");
    Kind::find([&](Kind::Case kind) {
        std::string wireName;
        for (const char letter : Kind::name(kind)) {
            const bool isUpper = letter >= 'A' && letter <= 'Z';
            wireName +=
                isUpper ? std::string{'_', static_cast<char>(letter - 'A' + 'a')} : std::string{letter};
        }
        EXPECT_NE(page.find("### `" + wireName + "`"), page.npos) << "docs/scripts.md lacks " << wireName;
        return false;
    });
}

TEST(TriggerConditionKind, NothingElseIsAKind) {
    for (const auto* text : {"\"reaches_fix\"", "\"ReachesFix\"", "\"\"", "\"afterStart \"", "0", "null"}) {
        EXPECT_THROW(decodeJson<Kind>(parseJson(text)), JsonError) << text;
    }
}

TEST(TriggerCondition, AbsentFieldsAreLeftOut) {
    EXPECT_EQ(encodeJson(TriggerCondition{.kind = Kind::crossesAgl}), R"({"kind":"crossesAgl"})");
    EXPECT_EQ(decoded(R"({"kind":"crossesAgl"})"), TriggerCondition{.kind = Kind::crossesAgl});
    EXPECT_EQ(decoded(R"({"kind":"crossesAgl","feet":null})"), TriggerCondition{.kind = Kind::crossesAgl});
}

TEST(TriggerCondition, AllFieldsAreWrittenAndReadUnderTheirNames) {
    const TriggerCondition condition{.kind = Kind::afterTrigger,
                                     .fix = "KSFO",
                                     .withinNm = 2.5,
                                     .feet = 1000,
                                     .climbing = false,
                                     .seconds = 30,
                                     .afterTriggerId = "a"};
    constexpr auto text =
        R"({"kind":"afterTrigger","fix":"KSFO","withinNm":2.5,"feet":1000,"climbing":false,"seconds":30,)"
        R"("afterTriggerId":"a"})";
    EXPECT_EQ(encodeJson(condition), text);
    EXPECT_EQ(decoded(text), condition);
}

TEST(TriggerCondition, AKindIsRequiredAndValuesAreNotCoerced) {
    EXPECT_THROW(decoded(R"({"fix":"KSFO"})"), JsonError);
    EXPECT_THROW(decoded(R"({"kind":"crossesAgl","feet":"1000"})"), JsonError);
    EXPECT_THROW(decoded(R"({"kind":"crossesAgl","climbing":1})"), JsonError);
}

TEST(TriggerCondition, EqualityLooksAtEveryField) {
    const TriggerCondition empty;
    EXPECT_EQ(empty, TriggerCondition{});
    EXPECT_NE(empty, TriggerCondition{.kind = Kind::afterStart});
    EXPECT_NE(empty, TriggerCondition{.fix = ""});
    EXPECT_NE(empty, TriggerCondition{.withinNm = 0});
    EXPECT_NE(empty, TriggerCondition{.feet = 0});
    EXPECT_NE(empty, TriggerCondition{.climbing = false});
    EXPECT_NE(empty, TriggerCondition{.seconds = 0});
    EXPECT_NE(empty, TriggerCondition{.afterTriggerId = ""});
}

} // namespace
} // namespace tarnly
