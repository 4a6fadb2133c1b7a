#include "TarnlyTrack/Grade/GradedValue.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarnlyTrack/Log/FlightLogReader.hpp"

namespace tarnly::track {
namespace {

using testing::Optional;

FlightLog oneSample() {
    FlightLogReader reader;
    reader.add(R"({"kind":"sample","sample":{"elapsed_s":0,"alt_ft":1490,"agl_ft":80,"bank_deg":-12,)"
               R"("pitch_deg":3,"gear_down":true,"flap_ratio":0.5}})"
               "\n");
    return reader.finish();
}

TEST(GradedValue, IsTheRecordedOneWithItsLimits) {
    const auto log = oneSample();
    const GradedFlight flight(log);
    const auto altitude =
        gradedValues(flight, {.id = "a", .kind = "altitude_held", .feet = 1500, .withinFeet = 100});
    ASSERT_EQ(altitude.size(), 1U);
    EXPECT_EQ(altitude[0].name, "altitude");
    EXPECT_THAT(altitude[0].value(0), Optional(1490));
    EXPECT_THAT(altitude[0].least, Optional(1400));
    EXPECT_THAT(altitude[0].most, Optional(1600));

    // With its sign: to the left and to the right.
    const auto bank = gradedValues(flight, {.id = "b", .kind = "bank_not_exceeded", .bankDegrees = 30});
    ASSERT_EQ(bank.size(), 1U);
    EXPECT_THAT(bank[0].value(0), Optional(-12));
    EXPECT_THAT(bank[0].least, Optional(-30));
    EXPECT_THAT(bank[0].most, Optional(30));

    EXPECT_TRUE(gradedValues(flight, {.id = "c", .kind = "time_between", .from = "x", .to = "y"}).empty());
}

TEST(GradedValue, IsEachThatAnApproachAsksFor) {
    const auto log = oneSample();
    const GradedFlight flight(log);
    const auto values = gradedValues(flight, {.id = "a",
                                              .kind = "stable_at",
                                              .feet = 500,
                                              .bankDegrees = 15,
                                              .leastPitchDegrees = -5,
                                              .mostPitchDegrees = 10,
                                              .gearDown = true,
                                              .leastFlapRatio = 0.4});
    std::vector<std::string> names;
    for (const auto& value : values)
        names.push_back(value.name);
    EXPECT_THAT(names, testing::ElementsAre("bank", "pitch", "gear handle", "flaps"));
    EXPECT_THAT(values[0].least, Optional(-15));
    EXPECT_THAT(values[1].least, Optional(-5));
    EXPECT_THAT(values[1].most, Optional(10));
    EXPECT_THAT(values[1].value(0), Optional(3));
    EXPECT_THAT(values[2].value(0), Optional(1));
    EXPECT_THAT(values[3].value(0), Optional(0.5));
    EXPECT_FALSE(values[3].most);
}

} // namespace
} // namespace tarnly::track
