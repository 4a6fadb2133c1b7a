#include "TarnlyClient/Commands/Arguments.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "TarnlyClient/Companion/ClientError.hpp"

namespace tarnly::client {
namespace {

TEST(Arguments, NumbersAreReadWhole) {
    EXPECT_EQ(parseNumber("3"), 3.0);
    EXPECT_EQ(parseNumber("-33.9"), -33.9);
    EXPECT_EQ(parseNumber("+0.5"), 0.5);
    EXPECT_EQ(parseNumber(".5"), 0.5);
    EXPECT_EQ(parseNumber("-.5"), -0.5);
    EXPECT_EQ(parseNumber("1e3"), 1000.0);
    EXPECT_EQ(parseNumber("1.7976931348623157e308"), 1.7976931348623157e308);
}

TEST(Arguments, WhatIsNoFiniteNumberIsRefused) {
    for (const auto* text :
         {"",    " ",   "x",   "1x", " 1",  "1 ",   "0x10", "1,5",      "+",     "-",
          "+-1", "++1", "--1", "1e", "inf", "-inf", "nan",  "infinity", "1e999", "-1e999"}) {
        EXPECT_EQ(parseNumber(text), std::nullopt) << text;
    }
}

TEST(Arguments, ANegativeNumberMayBeginWithItsPoint) {
    EXPECT_EQ(parseableArgument("-.5"), "-0.5");
    EXPECT_EQ(parseableArgument("-5"), "-5");
    EXPECT_EQ(parseableArgument("-."), "-.");
    EXPECT_EQ(parseableArgument("-.x"), "-.x");
    EXPECT_EQ(parseableArgument("--json"), "--json");
    EXPECT_EQ(parseableArgument(""), "");
}

TEST(Arguments, TextMustBeUtf8) {
    std::string good = "caf\xC3\xA9";
    std::string bad = "caf\xE9";
    EXPECT_EQ(utf8Text()(good), "");
    EXPECT_EQ(utf8Text()(bad), "\"caf\xEF\xBF\xBD\" is not UTF-8");
}

DatarefSetEntry entry(const std::string& name, double value, std::optional<std::int64_t> index = {}) {
    return {name, value, index};
}

TEST(DatarefAssignment, NameAndValue) {
    EXPECT_EQ(parseAssignment("sim/a/b=3.5"), entry("sim/a/b", 3.5));
    EXPECT_EQ(parseAssignment("a=-1e-3"), entry("a", -0.001));
    EXPECT_EQ(parseAssignment("a=-.5"), entry("a", -0.5));
}

TEST(DatarefAssignment, AnElementIsNameAndIndex) {
    EXPECT_EQ(parseAssignment("sim/a[2]=3"), entry("sim/a", 3, 2));
    EXPECT_EQ(parseAssignment("sim/a[0]=0"), entry("sim/a", 0, 0));
    EXPECT_EQ(parseAssignment("a[9223372036854775807]=1"), entry("a", 1, 9223372036854775807));
}

TEST(DatarefAssignment, AnythingElseIsWrongUsage) {
    for (const auto* text : {"",
                             "a",
                             "=1",
                             "a=",
                             "a=x",
                             "a=1=2",
                             "a=nan",
                             "a=inf",
                             "a=1e999",
                             "a= 1",
                             "[2]=1",
                             "a[]=1",
                             "a[x]=1",
                             "a[-1]=1",
                             "a[-0]=1",
                             "a[+1]=1",
                             "a[1.0]=1",
                             "a[ 1]=1",
                             "a[1=1",
                             "a1]=1",
                             "a[1]b=1",
                             "a[1][2]=1",
                             "a[9223372036854775808]=1"}) {
        EXPECT_THROW(parseAssignment(text), UsageError) << text;
    }
}

TEST(DatarefAssignment, TheComplaintShowsTheArgument) {
    try {
        parseAssignment("sim/a[x]=1");
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "\"sim/a[x]=1\": the index is not a whole number from 0 on");
    }
}

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

TEST(RawRequest, ARequestWithAnIdGoesAsItIs) {
    const auto request = rawRequest(R"( { "type" : "x",  "req_id" : 77 } )");
    EXPECT_EQ(request.text, R"( { "type" : "x",  "req_id" : 77 } )");
    EXPECT_EQ(request.reqId, 77);
}

TEST(RawRequest, AnIdIsAddedWhereThereIsNone) {
    EXPECT_EQ(rawRequest(R"( {"type":"{x}"})").text, R"( {"req_id":1000,"type":"{x}"})");
    EXPECT_EQ(rawRequest(R"({ "req_id2":1})").text, R"({"req_id":1000, "req_id2":1})");
    EXPECT_EQ(rawRequest("{}").text, R"({"req_id":1000})");
    EXPECT_EQ(rawRequest("{}").reqId, 1000);
}

TEST(RawRequest, AnIdThatIsNoneIsTheCompanionsToRefuse) {
    EXPECT_EQ(rawRequest(R"({"req_id":"7"})").text, R"({"req_id":"7"})");
    EXPECT_EQ(rawRequest(R"({"req_id":"7"})").reqId, std::nullopt);
    EXPECT_EQ(rawRequest(R"({"req_id":null})").reqId, std::nullopt);
}

TEST(RawRequest, WhatIsNoObjectIsWrongUsage) {
    for (const auto* text : {"", "x", "[]", "1", "\"x\"", "{", "{}{}", "null"}) {
        EXPECT_THROW(rawRequest(text), UsageError) << text;
    }
}

} // namespace
} // namespace tarnly::client
