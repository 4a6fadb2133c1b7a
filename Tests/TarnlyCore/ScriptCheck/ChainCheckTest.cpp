#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "TarnlyCore/ScriptCheck/Findings.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A line for each trigger, from 1: its id, and the one that it waits for; none for after_start.
std::vector<std::string> findings(const std::vector<std::pair<std::string, std::string>>& triggers) {
    std::string script = "[";
    for (const auto& [id, source] : triggers) {
        script += script.size() > 1 ? ",\n" : "";
        script += R"({"id":")" + id + R"(","action_kind":"b","action":{},"condition_kind":")";
        script += source.empty()
                      ? R"(after_start","condition":{"seconds":0}})"
                      : R"(after_trigger","condition":{"seconds":0,"after_trigger_id":")" + source + R"("}})";
    }
    return test::findingsIn(script + "]");
}

TEST(ChainCheck, ChainsInAnyOrderAreFine) {
    EXPECT_THAT(findings({{"c", "b"}, {"b", "a"}, {"a", ""}, {"d", "a"}}), IsEmpty());
}

TEST(ChainCheck, WhoWaitsForNobodyIsTold) {
    EXPECT_THAT(findings({{"welcome", ""}, {"b", "welcom"}, {"c", "b"}, {"d", "xyz"}}),
                ElementsAre("2:118: no trigger has the id \"welcom\", so this one never fires; did you mean "
                            "\"welcome\"?",
                            "4:118: no trigger has the id \"xyz\", so this one never fires; name one of the "
                            "script"));
}

TEST(ChainCheck, AnIdThatStandsTwiceIsTold) {
    EXPECT_THAT(findings({{"a", ""}, {"a", ""}}),
                ElementsAre("2:7: the id \"a\" is another trigger's already, and only the one of them that "
                            "comes first fires; give this one another id"));
}

TEST(ChainCheck, ACircleIsToldOnce) {
    EXPECT_THAT(findings({{"e", "a"}, {"a", "b"}, {"b", "c"}, {"c", "a"}}),
                ElementsAre("2:118: triggers wait for each other in a circle and never fire: \"a\" for \"b\" "
                            "for \"c\" for \"a\"; let one of them wait for something else"));
    EXPECT_THAT(findings({{"a", "a"}, {"b", ""}}),
                ElementsAre("1:119: the trigger waits for itself, so it never fires; name another one"));
}

TEST(ChainCheck, EachCircleIsToldAndLongOnesAreShortened) {
    std::vector<std::pair<std::string, std::string>> script;
    for (int number = 0; number < 9; ++number)
        script.emplace_back(std::to_string(number), std::to_string((number + 1) % 9));
    script.emplace_back("x", "y");
    script.emplace_back("y", "x");
    EXPECT_THAT(
        findings(script),
        ElementsAre("1:119: triggers wait for each other in a circle and never fire: \"0\" for \"1\" "
                    "for \"2\" for \"3\" for \"4\" … for \"0\"; let one of them wait for something else",
                    "10:118: triggers wait for each other in a circle and never fire: \"x\" for \"y\" "
                    "for \"x\"; let one of them wait for something else"));
}

TEST(ChainCheck, ACircleWithAWayInFires) {
    const auto found = findings({{"a", "b"}, {"b", "a"}, {"a", ""}});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(found[0], testing::HasSubstr("the id \"a\" is another trigger's"));
}

} // namespace
} // namespace tarnly
