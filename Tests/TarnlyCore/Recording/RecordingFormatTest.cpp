#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/Recordings.hpp"

namespace tarnly {
namespace {

/// What stands between the fences of the block of `language` that comes first in `text`.
std::string firstBlock(const std::string& text, const std::string& language) {
    const auto fence = "```" + language + "\n";
    const auto begin = text.find(fence);
    if (begin == std::string::npos) return {};
    const auto content = begin + fence.size();
    return text.substr(content, text.find("```", content) - content);
}

TEST(RecordingFormat, EveryFieldIsDescribed) {
    const auto page = test::contentOf(std::filesystem::path(TARNLY_DOCS) / "recording-format.md");
    const auto isDescribed = [&](const auto& field) {
        const auto name = "`" + std::string(field.key) + "`";
        EXPECT_NE(page.find(name), page.npos) << "docs/recording-format.md lacks " << name;
    };
    std::apply([&](const auto&... fields) { (isDescribed(fields), ...); }, TrackSample::fields());
    std::apply([&](const auto&... fields) { (isDescribed(fields), ...); }, FiredTriggerEvent::fields());
}

TEST(RecordingFormat, ExampleOfTheDocumentationIsALog) {
    const auto page = test::contentOf(std::filesystem::path(TARNLY_DOCS) / "recording-format.md");
    const auto example = firstBlock(page, "jsonl");
    const auto log = test::readLog(example);
    EXPECT_EQ(log.unreadableLines, 0U);
    EXPECT_FALSE(log.hasTornEnd);
    ASSERT_EQ(log.lines.size(), 4U);
    EXPECT_EQ(log.lines[0].sample->throttleRatio->size(), 2U);
    EXPECT_EQ(log.lines[2].fired->triggerId, "gear-check");

    std::string writtenAgain;
    for (const auto& line : log.lines)
        writtenAgain += encodeJson(line) + "\n";
    EXPECT_EQ(writtenAgain, example);
}

} // namespace
} // namespace tarnly
