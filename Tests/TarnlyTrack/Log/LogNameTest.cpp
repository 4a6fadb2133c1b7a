#include "TarnlyTrack/Log/LogName.hpp"

#include <gtest/gtest.h>

#include "TarnlyCore/Recording/RecordingLog.hpp"

namespace tarnly::track {
namespace {

using namespace std::chrono_literals;

constexpr auto moment = std::chrono::sys_days(std::chrono::year(2026) / 11 / 16) + 1h + 9min + 38s;

TEST(LogNameTest, IsReadAsTheCompanionWritesIt) {
    EXPECT_EQ(startByName("session-2026-11-16T010938Z.jsonl"), moment);
    EXPECT_EQ(startByName("/a/folder/session-2026-11-16T010938Z-2.jsonl"), moment);
    EXPECT_EQ(startByName("session-2026-11-16T010938Z-117.jsonl"), moment);
    const auto leapDay = std::chrono::sys_days(std::chrono::year(2024) / 2 / 29) + 23h + 59min + 59s;
    EXPECT_EQ(startByName(RecordingLog::fileName(leapDay)), leapDay);
}

TEST(LogNameTest, RenamedFilesTellNothing) {
    for (const auto* name :
         {"first solo.jsonl", "session-2026-11-16T010938Z.json", "session-2026-11-16T010938Z",
          "session-.jsonl", "session-2026-11-16T010938Z-.jsonl", "session-2026-11-16T010938Z-0.jsonl",
          "session-2026-11-16T010938Z copy.jsonl", "session-2026-11-16T01:09:38Z.jsonl",
          "Session-2026-11-16T010938Z.jsonl", "session-2026-11-1xT010938Z.jsonl", ""}) {
        EXPECT_EQ(startByName(name), std::nullopt) << name;
    }
}

TEST(LogNameTest, NoCalendarHasTheMoment) {
    for (const auto* name : {"session-2026-02-29T010938Z.jsonl", "session-2026-13-01T010938Z.jsonl",
                             "session-2026-11-00T010938Z.jsonl", "session-2026-11-16T240000Z.jsonl",
                             "session-2026-11-16T016038Z.jsonl", "session-2026-11-16T010960Z.jsonl"}) {
        EXPECT_EQ(startByName(name), std::nullopt) << name;
    }
}

} // namespace
} // namespace tarnly::track
