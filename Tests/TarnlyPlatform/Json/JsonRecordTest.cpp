#include "TarnlyPlatform/Json/JsonRecord.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

struct Waypoint {
    std::string ident;
    std::optional<double> altitudeFt;
    std::optional<std::int64_t> leg;

    bool operator==(const Waypoint&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("ident", &Waypoint::ident), field("alt_ft", &Waypoint::altitudeFt),
                          field("leg", &Waypoint::leg));
    }
};

struct Route {
    std::vector<Waypoint> waypoints;
    std::map<std::string, double> winds;
    bool isActive = false;

    bool operator==(const Route&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("waypoints", &Route::waypoints), field("winds", &Route::winds),
                          field("active", &Route::isActive));
    }
};

struct Holding {
    std::string fix;
    std::string turn;
    std::int64_t legMinutes = 0;
    bool isEntered = false;
    std::optional<double> speedKts;

    bool operator==(const Holding&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("fix", &Holding::fix), field("turn", &Holding::turn, "right"),
                          field("leg_min", &Holding::legMinutes, 1),
                          field("entered", &Holding::isEntered, true), field("speed", &Holding::speedKts));
    }
};

template <typename Member>
concept MayHaveADefault = requires(Member Holding::*member, Member value) {
    field("key", member, value);
};

template <typename T>
T decode(std::string_view text) {
    return decodeJson<T>(parseJson(text));
}

TEST(JsonRecord, WritesFieldsInTableOrderAndLeavesAbsentOnesOut) {
    EXPECT_EQ(encodeJson(Waypoint{"KSFO", std::nullopt, std::nullopt}), R"({"ident":"KSFO"})");
    EXPECT_EQ(encodeJson(Waypoint{"KSFO", 1500.5, 2}), R"({"ident":"KSFO","alt_ft":1500.5,"leg":2})");
}

TEST(JsonRecord, NestedRecordsSurviveTheRoundTrip) {
    const Route route{{{"A", 1.0, std::nullopt}, {"B", std::nullopt, 3}}, {{"N", 12.5}}, true};
    EXPECT_EQ(decode<Route>(encodeJson(route)), route);
}

TEST(JsonRecord, MissingAndNullOptionalsAreAbsent) {
    EXPECT_EQ(decode<Waypoint>(R"({"ident":"A","alt_ft":null})"),
              (Waypoint{"A", std::nullopt, std::nullopt}));
}

TEST(JsonRecord, UnknownKeysAreIgnored) { EXPECT_EQ(decode<Waypoint>(R"({"ident":"A","x":[]})").ident, "A"); }

TEST(JsonRecord, RequiredFieldsMustBeThere) {
    EXPECT_THROW(decode<Waypoint>("{}"), JsonError);
    EXPECT_THROW(decode<Waypoint>(R"({"ident":null})"), JsonError);
}

TEST(JsonRecord, AMissingFieldWithADefaultTakesIt) {
    EXPECT_EQ(decode<Holding>(R"({"fix":"SUNOL"})"), (Holding{"SUNOL", "right", 1, true, std::nullopt}));
    EXPECT_EQ(decode<Holding>(R"({"fix":"SUNOL","leg_min":2})"),
              (Holding{"SUNOL", "right", 2, true, std::nullopt}));
    EXPECT_THROW(decode<Holding>(R"({"turn":"left","leg_min":2,"entered":false})"), JsonError);
}

TEST(JsonRecord, AFieldWithADefaultIsWrittenAlwaysAndReadWhenItIsThere) {
    const Holding other{"SUNOL", "left", 0, false, std::nullopt};
    EXPECT_EQ(encodeJson(other), R"({"fix":"SUNOL","turn":"left","leg_min":0,"entered":false})");
    EXPECT_EQ(decode<Holding>(encodeJson(other)), other);
    const Holding usual{"SUNOL", "right", 1, true, 230.0};
    EXPECT_EQ(encodeJson(usual), R"({"fix":"SUNOL","turn":"right","leg_min":1,"entered":true,"speed":230})");
}

TEST(JsonRecord, ADefaultIsForNoOtherKindAndNotForNull) {
    for (const char* text :
         {R"({"fix":"A","turn":1})", R"({"fix":"A","leg_min":"1"})", R"({"fix":"A","entered":1})",
          R"({"fix":"A","turn":null})", R"({"fix":"A","leg_min":null})", R"({"fix":"A","entered":null})"}) {
        EXPECT_THROW(decode<Holding>(text), JsonError) << text;
    }
}

TEST(JsonRecord, AnOptionalFieldHasNoDefault) {
    EXPECT_TRUE(MayHaveADefault<bool>);
    EXPECT_FALSE(MayHaveADefault<std::optional<bool>>);
}

TEST(JsonRecord, KindsAreNotCoerced) {
    EXPECT_THROW(decode<Waypoint>(R"({"ident":1})"), JsonError);
    EXPECT_THROW(decode<Waypoint>(R"({"ident":"A","alt_ft":"1"})"), JsonError);
    EXPECT_THROW(decode<Waypoint>(R"({"ident":"A","alt_ft":true})"), JsonError);
    EXPECT_THROW(decode<Waypoint>("[]"), JsonError);
    EXPECT_THROW(decode<Route>(R"({"waypoints":{},"winds":{},"active":true})"), JsonError);
    EXPECT_THROW(decode<Route>(R"({"waypoints":[],"winds":[],"active":true})"), JsonError);
    EXPECT_THROW(decode<Route>(R"({"waypoints":[],"winds":{},"active":1})"), JsonError);
}

TEST(JsonRecord, AnIntegerFieldTakesAnyIntegralNumberInRange) {
    EXPECT_EQ(decode<std::int64_t>("7.0"), 7);
    EXPECT_EQ(decode<std::int64_t>("1e2"), 100);
    EXPECT_EQ(decode<std::int64_t>("-0"), 0);
    EXPECT_EQ(decode<std::int64_t>("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(decode<std::int64_t>("-9223372036854775808.0"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(decode<std::int64_t>("9007199254740993.0"), 9007199254740993);
    for (const char* text : {"-9223372036854775809", "9007199254740992.5", "1e-400"}) {
        EXPECT_THROW(decode<std::int64_t>(text), JsonError) << text;
    }
    for (const char* text :
         {"7.5", "9223372036854775808", "9.3e18", "-9.3e18", "1e300", "\"7\"", "true", "null"}) {
        EXPECT_THROW(decode<std::int64_t>(text), JsonError) << text;
    }
}

TEST(JsonRecord, ADoubleFieldTakesIntegers) {
    EXPECT_EQ(decode<double>("7"), 7.0);
    EXPECT_EQ(decode<double>("18446744073709551615"), 18446744073709551615.0);
}

TEST(JsonRecord, ANumberThatIsNotFiniteFailsTheEncoding) {
    EXPECT_THROW(encodeJson(Waypoint{"A", std::numeric_limits<double>::infinity(), std::nullopt}), JsonError);
}

} // namespace
} // namespace tarnly
