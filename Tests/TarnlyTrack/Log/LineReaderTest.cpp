#include "TarnlyTrack/Log/LineReader.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "TarnlyCore/Recording/RecordingLog.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyTrack/Log/PlainLine.hpp"

namespace tarnly::track {
namespace {

using Kind = LineReader::Kind;

std::optional<double> number(const LogSample& sample, Quantity quantity) {
    const auto value = sample.numbers[static_cast<std::size_t>(quantity)];
    return std::isnan(value) ? std::nullopt : std::optional(value);
}

std::optional<std::vector<double>> lever(const LogSample& sample, Lever which) {
    const auto index = static_cast<std::size_t>(which);
    return sample.hasLever[index] ? std::optional(sample.levers[index]) : std::nullopt;
}

/// What the line's sample has, as the recording's own record of it.
TrackSample recordOf(const LogSample& sample) {
    return {.elapsedSeconds = number(sample, Quantity::elapsedSeconds).value(),
            .lat = number(sample, Quantity::lat),
            .lon = number(sample, Quantity::lon),
            .altitudeFt = number(sample, Quantity::altitudeFt).value(),
            .aglFt = number(sample, Quantity::aglFt),
            .gearDown = sample.switches[0],
            .throttleRatio = lever(sample, Lever::throttle),
            .mixtureRatio = lever(sample, Lever::mixture),
            .propRatio = lever(sample, Lever::prop),
            .flapRatio = number(sample, Quantity::flapRatio),
            .gearRatio = number(sample, Quantity::gearRatio),
            .bankDeg = number(sample, Quantity::bankDeg),
            .pitchDeg = number(sample, Quantity::pitchDeg),
            .autopilotOn = sample.switches[1]};
}

TrackSample bareSample(double elapsedSeconds, double altitudeFt) {
    TrackSample sample;
    sample.elapsedSeconds = elapsedSeconds;
    sample.altitudeFt = altitudeFt;
    return sample;
}

/// Samples of every shape.
class AnySample {
  public:
    TrackSample next() {
        TrackSample sample;
        sample.elapsedSeconds = any();
        sample.altitudeFt = any();
        perhaps(sample.lat, [&] { return any(); });
        perhaps(sample.lon, [&] { return any(); });
        perhaps(sample.aglFt, [&] { return any(); });
        perhaps(sample.gearDown, [&] { return coin(); });
        perhaps(sample.throttleRatio, [&] { return list(); });
        perhaps(sample.mixtureRatio, [&] { return list(); });
        perhaps(sample.propRatio, [&] { return list(); });
        perhaps(sample.flapRatio, [&] { return any(); });
        perhaps(sample.gearRatio, [&] { return any(); });
        perhaps(sample.bankDeg, [&] { return any(); });
        perhaps(sample.pitchDeg, [&] { return any(); });
        perhaps(sample.autopilotOn, [&] { return coin(); });
        return sample;
    }

  private:
    bool coin() { return random_() % 2 == 0; }

    double any() {
        if (coin()) return std::uniform_real_distribution(-180.0, 180.0)(random_);
        if (coin()) return std::ldexp(1.0 + double(random_() % 1000) / 1000, int(random_() % 1000) - 500);
        return double(random_() % 100'000) - 50'000;
    }

    std::vector<double> list() {
        std::vector<double> values(random_() % 5);
        for (auto& value : values)
            value = any();
        return values;
    }

    template <typename T, typename Make>
    void perhaps(std::optional<T>& value, Make make) {
        if (coin()) value = make();
    }

    std::mt19937 random_{7};
};

TEST(LineReaderTest, ReadsWhatTheCompanionWrites) {
    AnySample any;
    LineReader reader;
    for (int i = 0; i < 2000; ++i) {
        const auto record = any.next();
        const auto line = encodeJson(LogLine::of(record));
        ASSERT_EQ(reader.read(line), Kind::sample) << line;
        ASSERT_EQ(recordOf(reader.sample()), record) << line;
        ASSERT_EQ(reader.leftOutValues(), 0U);
        // The same by the JSON parser, which a blank leads to.
        ASSERT_EQ(reader.read(" " + line), Kind::sample) << line;
        ASSERT_EQ(recordOf(reader.sample()), record) << line;
    }
}

TEST(LineReaderTest, PlainLinesNeedNoJsonParser) {
    AnySample any;
    LogSample sample;
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(readPlainSample(encodeJson(LogLine::of(any.next())), sample));
}

/// What the short cut takes, the JSON parser takes too: with each byte of a line replaced in turn.
TEST(LineReaderTest, ShortCutTakesNothingThatIsNoJson) {
    const std::string line = R"({"kind":"sample","sample":{"elapsed_s":0.5,"lat":-1.5e+2,"alt_ft":10,)"
                             R"("gear_down":true,"throttle_ratio":[0,0.25],"autopilot_on":false}})";
    LogSample sample;
    ASSERT_TRUE(readPlainSample(line, sample));
    int taken = 0;
    for (std::size_t place = 0; place < line.size(); ++place) {
        for (const char c : std::string_view("0.eE+-,:]}[{\"x t\\")) {
            auto changed = line;
            changed[place] = c;
            if (!readPlainSample(changed, sample)) continue;
            ++taken;
            EXPECT_NO_THROW(parseJson(changed)) << changed;
        }
        EXPECT_FALSE(readPlainSample(line.substr(0, place), sample));
    }
    EXPECT_GT(taken, 20);
}

TEST(LineReaderTest, OrderBlanksAndUnknownKeysMeanNothing) {
    LineReader reader;
    ASSERT_EQ(reader.read("{ \"sample\" : {\"alt_ft\":7,\"new_key\":[{}],\"lon\":8.5,\"elapsed_s\":1e0},\t"
                          "\"kind\":\"sample\",\"more\":null}\r"),
              Kind::sample);
    EXPECT_EQ(number(reader.sample(), Quantity::elapsedSeconds), 1);
    EXPECT_EQ(number(reader.sample(), Quantity::altitudeFt), 7);
    EXPECT_EQ(number(reader.sample(), Quantity::lon), 8.5);
    EXPECT_EQ(number(reader.sample(), Quantity::lat), std::nullopt);
}

TEST(LineReaderTest, NothingIsLeftOfTheLineBefore) {
    LineReader reader;
    reader.read(R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":2,"lat":3,"gear_down":true,)"
                R"("prop_ratio":[1]}})");
    reader.read(R"({"kind":"sample","sample":{"elapsed_s":2,"alt_ft":2}})");
    EXPECT_EQ(recordOf(reader.sample()), bareSample(2, 2));
}

TEST(LineReaderTest, ReadsTriggers) {
    LineReader reader;
    ASSERT_EQ(reader.read(R"({"kind":"fired","fired":{"trigger_id":"a\/b","elapsed_s":0.5,)"
                          R"("action_kind":"speak"}})"),
              Kind::fired);
    EXPECT_EQ(reader.fired(), (FiredTriggerEvent{"a/b", 0.5, "speak"}));
}

TEST(LineReaderTest, WhatTheFormatDoesNotHaveIsLeftOut) {
    LineReader reader;
    ASSERT_EQ(reader.read(R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":2,"lat":1e999,"lon":"8",)"
                          R"("gear_down":1,"throttle_ratio":[0.5,-1e999],"prop_ratio":[1],"agl_ft":3,)"
                          R"("bank_deg":null}})"),
              Kind::sample);
    auto expected = bareSample(1, 2);
    expected.aglFt = 3;
    expected.propRatio = {1};
    EXPECT_EQ(recordOf(reader.sample()), expected);
    EXPECT_EQ(reader.leftOutValues(), 4U);
}

TEST(LineReaderTest, LinesThatAreNoLogLines) {
    LineReader reader;
    for (const auto* line :
         {"", "x", "[]", "7", "{}", "null", R"({"kind":"sample"})", R"({"kind":"sample","sample":[]})",
          R"({"kind":"sample","sample":{}})", R"({"kind":"sample","sample":{"alt_ft":2}})",
          R"({"kind":"sample","sample":{"elapsed_s":1e999,"alt_ft":2}})",
          R"({"kind":"sample","sample":{"elapsed_s":NaN,"alt_ft":2}})",
          R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":2}},)",
          R"({"kind":"sample","sample":{"elapsed_s":1,"alt_ft":2)", R"({"kind":"fired"})",
          R"({"kind":"fired","fired":{"trigger_id":"a","elapsed_s":1}})",
          R"({"kind":"fired","fired":{"trigger_id":"a","elapsed_s":1e999,"action_kind":"b"}})",
          R"({"sample":{"elapsed_s":1,"alt_ft":2}})", "\xEF\xBB\xBF{}"}) {
        EXPECT_EQ(reader.read(line), Kind::unreadable) << line;
    }
    EXPECT_EQ(reader.read(std::string_view("\0\0\0", 3)), Kind::unreadable);
}

TEST(LineReaderTest, LaterVersionsMayHaveMoreKinds) {
    LineReader reader;
    EXPECT_EQ(reader.read(R"({"kind":"paused","paused":{"elapsed_s":1}})"), Kind::other);
}

} // namespace
} // namespace tarnly::track
