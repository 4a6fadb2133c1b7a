#include "TarnlyApp/StatusText.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(StatusText, SaysHowTheCompanionCanBeReached) {
    EXPECT_EQ(listeningText(41234, "rig42", false),
              R"(Listening on port 41234, advertising as "rig42", pairing open.)");
    EXPECT_EQ(listeningText(1, "a", true),
              R"(Listening on port 1, advertising as "a", pairing password required.)");
    EXPECT_EQ(listeningText(41234, std::nullopt, false),
              "Listening on port 41234, not advertised, pairing open.");
    EXPECT_EQ(listeningText(std::nullopt, "a", false),
              R"(Listening on port ?, advertising as "a", pairing open.)");
}

TEST(StatusText, SaysWhyAStartFailed) {
    EXPECT_EQ(failureText("alreadyStarted"), "Failed to start: alreadyStarted");
}

} // namespace
} // namespace tarnly
