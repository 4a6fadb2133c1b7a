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
