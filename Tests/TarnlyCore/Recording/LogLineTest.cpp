#include "TarnlyCore/Recording/RecordingLog.hpp"

#include <gtest/gtest.h>

#include "TarnlyCore/Recording/Recordings.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

LogLine decoded(std::string_view text) { return decodeJson<LogLine>(parseJson(text)); }

TEST(LogLine, SampleHasNoFiredKey) {
    EXPECT_EQ(encodeJson(LogLine::of(test::sampleAt(0.5))),
              R"({"kind":"sample","sample":{"elapsed_s":0.5,"alt_ft":2500}})");
}

TEST(LogLine, FiredHasNoSampleKey) {
    EXPECT_EQ(
        encodeJson(LogLine::of(test::firedAt(12.25))),
        R"({"kind":"fired","fired":{"trigger_id":"gear-check","elapsed_s":12.25,"action_kind":"speak"}})");
}

TEST(LogLine, SlashesInTextsAreEscaped) {
    EXPECT_EQ(encodeJson(LogLine::of(FiredTriggerEvent{"a/b", 1, "x"})),
              R"({"kind":"fired","fired":{"trigger_id":"a\/b","elapsed_s":1,"action_kind":"x"}})");
}

TEST(LogLine, ReadsBackWhatItWrote) {
    const auto sample = LogLine::of(test::fullSampleAt(7.0009765625));
    const auto fired = LogLine::of(FiredTriggerEvent{"a/\"ä\n", 1e-7, ""});
    EXPECT_EQ(decoded(encodeJson(sample)), sample);
    EXPECT_EQ(decoded(encodeJson(fired)), fired);
}

TEST(LogLine, IsCompleteWithTheRecordOfItsKindOnly) {
    EXPECT_TRUE(LogLine::of(test::sampleAt(0)).isComplete());
    EXPECT_TRUE(LogLine::of(test::firedAt(0)).isComplete());
    EXPECT_FALSE(decoded(R"({"kind":"sample"})").isComplete());
    EXPECT_FALSE(decoded(R"({"kind":"fired","sample":{"elapsed_s":0,"alt_ft":0}})").isComplete());
    EXPECT_TRUE(decoded(R"({"kind":"weather"})").isComplete());
}

} // namespace
} // namespace tarnly
