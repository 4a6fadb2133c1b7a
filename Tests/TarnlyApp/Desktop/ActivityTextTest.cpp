#include "TarnlyApp/Desktop/ActivityText.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using namespace std::chrono_literals;

TEST(ActivityText, CountsClients) {
    EXPECT_EQ(clientsText(0), "No client is paired.");
    EXPECT_EQ(clientsText(1), "1 client is paired.");
    EXPECT_EQ(clientsText(2), "2 clients are paired.");
    EXPECT_EQ(clientsText(11), "11 clients are paired.");
}

TEST(ActivityText, TellsForHowLongARecordingRuns) {
    EXPECT_EQ(recordingText(std::nullopt), "No recording is running.");
    EXPECT_EQ(recordingText(0s), "Recording for 0:00.");
    EXPECT_EQ(recordingText(65s), "Recording for 1:05.");
    EXPECT_EQ(recordingText(59min + 59s), "Recording for 59:59.");
    EXPECT_EQ(recordingText(1h + 5s), "Recording for 1:00:05.");
    EXPECT_EQ(recordingText(36h + 10min), "Recording for 36:10:00.");
}

} // namespace
} // namespace tarnly
