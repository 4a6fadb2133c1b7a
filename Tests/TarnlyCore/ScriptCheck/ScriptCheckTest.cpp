#include "TarnlyCore/ScriptCheck/ScriptCheck.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/ScriptCheck/Findings.hpp"

namespace tarnly {
namespace {

using test::findingsIn;
using test::withCondition;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(ScriptCheck, TheExampleOfTheDocumentationIsFine) {
    const auto lesson = test::contentOf(std::filesystem::path(TARNLY_DOCS) / "lesson.json");
    EXPECT_THAT(findingsIn(lesson), IsEmpty());
    EXPECT_GT(lesson.size(), 1000U);
}

TEST(ScriptCheck, AListAndAnObjectWithAListAreScripts) {
    EXPECT_THAT(findingsIn("[]"), IsEmpty());
    EXPECT_THAT(findingsIn(R"({"title":"A lesson","triggers":[]})"), IsEmpty());
    constexpr auto wanted = R"(a list of triggers is wanted, or an object {"triggers":[…]})";
    EXPECT_THAT(findingsIn(" 7"), ElementsAre(std::string("1:2: ") + wanted));
    EXPECT_THAT(findingsIn(R"({"triggers":{}})"), ElementsAre(std::string("1:13: ") + wanted));
    EXPECT_THAT(findingsIn(R"({"Trigger":[]})"),
                ElementsAre(R"(1:2: unknown field "Trigger"; did you mean "triggers"?)"));
}

TEST(ScriptCheck, WhatIsNoJsonIsToldWithItsPlaceAndACure) {
    EXPECT_THAT(findingsIn("[\n  {\"id\": \"ä\",}]"),
                ElementsAre("2:14: no valid JSON: syntax error; remove the comma before it"));
    EXPECT_THAT(findingsIn("[\n\n"),
                ElementsAre("1:2: no valid JSON: incomplete JSON; it ends too early: close what is open by "
                            "quotation marks, ] or }"));
    EXPECT_THAT(
        findingsIn("{\"a\": 1 // one\n}"),
        ElementsAre("1:9: no valid JSON: syntax error; remove the comment, which JSON does not have"));
    EXPECT_THAT(findingsIn("[{} {}]"),
                ElementsAre("1:5: no valid JSON: syntax error; a comma or a colon is missing before it"));
    EXPECT_THAT(findingsIn("{id: 1}"),
                ElementsAre("1:2: no valid JSON: syntax error; put keys and texts in quotation marks"));
    EXPECT_THAT(findingsIn("\xEF\xBB\xBF[]"), SizeIs(1));
    EXPECT_THAT(findingsIn(""), ElementsAre("1:1: no valid JSON: incomplete JSON; it is empty"));
}

TEST(ScriptCheck, FixesAreLookedUpWhereThereIsADatabase) {
    std::vector<std::string> asked;
    const FixResolver database = [&](const std::string& ident) {
        asked.push_back(ident);
        return ident == "RIDGE" ? std::optional(Coordinate{}) : std::nullopt;
    };
    std::string script = "[";
    for (const auto* id : {"a", "b", "c", "d"}) {
        const std::string fix = *id == 'a' ? "ridge" : *id == 'd' ? "Ridge" : "xyzzy";
        script +=
            std::string(script.size() > 1 ? ",\n" : "") + R"({"id":")" + id +
            R"(","action_kind":"","action":{},"condition_kind":"reaches_fix","condition":{"within_nm":1,"fix":")" +
            fix + "\"}}";
    }
    EXPECT_THAT(findingsIn(script + "]"), IsEmpty());
    EXPECT_THAT(findingsIn(script + "]", database),
                ElementsAre("2:104: the navigation database has no fix or navaid \"XYZZY\", so it is never "
                            "reached; look at its spelling",
                            "3:104: the navigation database has no fix or navaid \"XYZZY\", so it is never "
                            "reached; look at its spelling"));
    EXPECT_THAT(asked, ElementsAre("RIDGE", "XYZZY"));
}

TEST(ScriptCheck, TheLimitsOfCompanionsAreTold) {
    std::string triggers;
    std::string fixes;
    for (int number = 0; number <= 100'000; ++number) {
        const auto id = std::to_string(number);
        const std::string comma = number == 0 ? "" : ",";
        triggers +=
            comma + R"({"id":")" + id +
            R"(","condition_kind":"after_start","condition":{"seconds":1},"action_kind":"","action":{}})";
        if (number > 10'000) continue;
        fixes += comma + R"({"id":")" + id + R"(","condition_kind":"reaches_fix","condition":{"fix":")" + id +
                 R"(","within_nm":1},"action_kind":"","action":{}})";
    }
    EXPECT_THAT(findingsIn("[" + triggers + "]"),
                ElementsAre("1:1: 100001 triggers, and companions take 100000 at most; split the script"));
    const auto found = findingsIn("[" + fixes + "]");
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_THAT(found[0], testing::EndsWith(
                              "companions take at most 10000 different fixes, and this one is beyond; split "
                              "the script"));
}

TEST(ScriptCheck, WhatIsQuotedIsPrintableAndShort) {
    const auto found = findingsIn(withCondition("a\\u001b" + std::string(200, 'x'), "{}"));
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_THAT(found[0], testing::HasSubstr("\"a?" + std::string(58, 'x') + "…\""));
}

} // namespace
} // namespace tarnly
