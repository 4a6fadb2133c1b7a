#include "TarnlyClient/Commands/FlightChoice.hpp"

#include <gtest/gtest.h>

#include "TarnlyClient/Companion/ClientError.hpp"

namespace tarnly::client {
namespace {

const std::vector<FlightListing> flights{{"Pattern 1", "/a/Pattern 1.sit", {}},
                                         {"pattern 1", "/a/pattern 1.sit", {}},
                                         {"Twice", "/a/Twice.sit", {}},
                                         {"Twice", "/b/Twice.sit", {}}};

std::string complaint(const std::string& name) {
    try {
        return "taken: " + pathOfFlight(flights, name);
    } catch (const ClientError& error) {
        return error.what();
    }
}

TEST(FlightChoice, TheNameCountsExactly) {
    EXPECT_EQ(pathOfFlight(flights, "Pattern 1"), "/a/Pattern 1.sit");
    EXPECT_EQ(pathOfFlight(flights, "pattern 1"), "/a/pattern 1.sit");
    EXPECT_EQ(complaint("PATTERN 1"), "no flight is named \"PATTERN 1\"; flights lists those that are there");
    EXPECT_EQ(complaint("Pattern"), "no flight is named \"Pattern\"; flights lists those that are there");
}

TEST(FlightChoice, OfSeveralNoneIsGuessed) {
    EXPECT_EQ(complaint("Twice"),
              "several flights are named \"Twice\"; say which by its path:\n  /a/Twice.sit\n  /b/Twice.sit");
}

TEST(FlightChoice, APathHasASlash) {
    EXPECT_TRUE(isFlightPath("/a/Pattern 1.sit"));
    EXPECT_TRUE(isFlightPath("a/b"));
    EXPECT_FALSE(isFlightPath("Pattern 1.sit"));
}

} // namespace
} // namespace tarnly::client
