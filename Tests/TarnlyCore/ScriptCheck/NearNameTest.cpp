#include "TarnlyCore/ScriptCheck/NearName.hpp"

#include <gtest/gtest.h>

#include <array>

namespace tarnly {
namespace {

constexpr std::array<std::string_view, 4> names{"seconds", "within_nm", "after_trigger_id", "feet"};

TEST(NearName, FindsWhatDiffersInFewLetters) {
    EXPECT_EQ(nearName("secnds", names), "seconds");
    EXPECT_EQ(nearName("second", names), "seconds");
    EXPECT_EQ(nearName("fete", std::array<std::string_view, 1>{"feet"}), std::nullopt);
    EXPECT_EQ(nearName("foet", names), "feet");
}

TEST(NearName, LetterCaseAndJoiningOfWordsDoNotCount) {
    EXPECT_EQ(nearName("withinNm", names), "within_nm");
    EXPECT_EQ(nearName("After Trigger-ID", names), "after_trigger_id");
}

TEST(NearName, FindsTheNameOfWhichAPartWasWritten) {
    EXPECT_EQ(nearName("within", names), "within_nm");
    EXPECT_EQ(nearName("trigger_id", names), "after_trigger_id");
}

TEST(NearName, FindsNothingThatIsFarOrVeryLong) {
    EXPECT_EQ(nearName("colour", names), std::nullopt);
    EXPECT_EQ(nearName("", names), std::nullopt);
    EXPECT_EQ(nearName(std::string(10'000, 's'), names), std::nullopt);
    EXPECT_EQ(nearName("seconds", {}), std::nullopt);
}

TEST(NearName, AsksThePerson) {
    EXPECT_EQ(didYouMean("sec0nds", names, "; no"), "; did you mean \"seconds\"?");
    EXPECT_EQ(didYouMean("colour", names, "; no"), "; no");
}

} // namespace
} // namespace tarnly
