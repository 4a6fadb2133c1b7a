#include "TarnlyPlatform/Json/JsonText.hpp"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace tarnly {
namespace flightPlan { // not unnamed: an optional record is looked into by a template of its own

struct Leg {
    std::string ident;
    std::optional<double> altitude;
    std::optional<std::map<std::string, std::int64_t>> more;

    bool operator==(const Leg&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("ident", &Leg::ident), field("altitude", &Leg::altitude),
                          field("more", &Leg::more));
    }
};

struct Route {
    std::vector<Leg> legs;

    bool operator==(const Route&) const = default;
    static constexpr auto fields() { return std::tuple(field("legs", &Route::legs)); }
};

struct Plan {
    std::string name;
    std::optional<std::int64_t> number;
    std::optional<Route> route;

    bool operator==(const Plan&) const = default;
    static constexpr auto fields() {
        return std::tuple(field("name", &Plan::name), field("number", &Plan::number),
                          field("route", &Plan::route));
    }
};

} // namespace flightPlan

namespace {

using flightPlan::Leg;
using flightPlan::Plan;

/// What comes out, or the complaint.
template <typename Decode>
std::string outcome(const Decode& decode) {
    try {
        return encodeJson(decode());
    } catch (const JsonError& error) {
        return error.what();
    }
}

std::string fromWhole(const std::string& text) {
    return outcome([&] { return decodeJson<Plan>(parseJson(text)); });
}

std::string fromText(const std::string& text) {
    return outcome([&] { return decodeJsonText<Plan>(text); });
}

std::string elementByElement(const std::string& text) {
    return outcome([&] {
        DecodedElements<Leg> legs;
        auto plan = decodeJsonText<Plan>(text, &legs);
        if (plan.route) plan.route->legs = legs.take();
        return plan;
    });
}

/// That the three ways say the same.
void expectSame(const std::string& text) {
    const auto expected = fromWhole(text);
    EXPECT_EQ(fromText(text), expected) << text;
    EXPECT_EQ(elementByElement(text), expected) << text;
}

TEST(JsonText, ARecordIsReadFromAmongMuchElse) {
    const auto text = R"({"junk":[1,[2,{"name":"no"}],1e5],"name":"a\u00e9","other":{"name":"no","number":1},
        "number":7,"route":{"junk":{},"legs":[{"x":[[]],"ident":"b","more":{"c":1}},{"ident":"d"}]}})";
    const auto plan = decodeJsonText<Plan>(text);
    EXPECT_EQ(plan, (Plan{"a\u00E9", 7, flightPlan::Route{{{"b", {}, {{{"c", 1}}}}, {"d", {}, {}}}}}));
    expectSame(text);
}

TEST(JsonText, ElementsAreHandedOutOneByOne) {
    DecodedElements<Leg> legs;
    const auto plan =
        decodeJsonText<Plan>(R"({"name":"","route":{"legs":[{"ident":"a"},{"ident":"b"}]}})", &legs);
    ASSERT_TRUE(plan.route);
    EXPECT_TRUE(plan.route->legs.empty());
    EXPECT_EQ(legs.take(), (std::vector<Leg>{{"a", {}, {}}, {"b", {}, {}}}));
}

TEST(JsonText, TheLastOfDuplicateKeysCounts) {
    expectSame(R"({"name":1,"name":"a","number":[],"number":2})");
    expectSame(R"({"name":"a","name":1})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":"a"}]},"route":{"legs":[]}})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":"a"}],"legs":[{"ident":"b"}]}})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":1}],"legs":[{"ident":"b"}]}})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":"b"}],"legs":[{"ident":1}]}})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":"a"}]},"route":{}})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":"a"}]},"route":null})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":"a"}],"legs":{}}})");
    expectSame(R"({"name":"a","route":{"legs":[{"ident":1,"ident":"b"}]}})");
}

TEST(JsonText, WhatHasTheWrongKindIsRefusedAsInTheWhole) {
    for (const std::string wrong : {"1", "null", "\"x\"", "true", "[]", "{}", "[[1]]", "{\"a\":{}}", "1.5"}) {
        expectSame(wrong);
        expectSame(R"({"name":)" + wrong + "}");
        expectSame(R"({"name":"a","number":)" + wrong + "}");
        expectSame(R"({"name":"a","route":)" + wrong + "}");
        expectSame(R"({"name":"a","route":{"legs":)" + wrong + "}}");
        expectSame(R"({"name":"a","route":{"legs":[)" + wrong + "]}}");
        expectSame(R"({"name":"a","route":{"legs":[{"ident":)" + wrong + "}]}}");
        expectSame(R"({"name":"a","route":{"legs":[{"ident":"b","altitude":)" + wrong + "}]}}");
        expectSame(R"({"name":"a","route":{"legs":[{"ident":"b","more":)" + wrong + "}]}}");
    }
}

TEST(JsonText, WhatIsNotWantedIsCheckedAllTheSame) {
    const auto complaint = [](const std::string& junk) {
        expectSame(R"({"name":"a","junk":)" + junk + "}");
        return fromText(R"({"name":"a","junk":)" + junk + "}");
    };
    const std::string open(63, '[');
    const std::string close(63, ']');
    EXPECT_EQ(complaint(open + close), R"({"name":"a"})");
    EXPECT_NE(complaint("[" + open + close + "]"), R"({"name":"a"})");
    EXPECT_EQ(complaint("1e308"), R"({"name":"a"})");
    for (const char* junk : {"1e309", "-1e309", "[1e999]", "01", "\"\x01\"", "\"\\ud800\"", "[1,]", "{\"a\"}",
                             "nul", "\"\xFF\"", "{} {}", "[}", "1.", "-", ""}) {
        EXPECT_NE(complaint(junk), R"({"name":"a"})") << junk;
    }
}

TEST(JsonText, KeysAreReadHoweverTheyAreWritten) {
    EXPECT_EQ(fromText(R"({"n\u0061me":"a","\u006eumber":1})"), R"({"name":"a","number":1})");
    expectSame(R"({"name":"a","number\u0020":1,"":2,"\u0000":3})");
    const std::string longKey(100'000, 'x');
    expectSame(R"({"name":"a",")" + longKey + R"(\n":1})");
    expectSame(R"({"name":"a","\n)" + longKey + R"(":1,"\u006eumber":5})");
}

/// A value at random, of few keys so that they come often.
std::string randomValue(std::mt19937& random, int depth) {
    const std::vector<std::string> scalars{"1", "\"x\"", "null", "-0", "2.5", "true", "7.0", "\"\\n\""};
    const std::vector<std::string> keys{"name", "number", "route", "legs", "ident", "altitude", "more", "x"};
    const auto kind = depth == 0 ? 0 : random() % 3;
    if (kind == 0) return scalars[random() % scalars.size()];
    std::string text;
    for (auto left = random() % 4; left > 0; --left) {
        if (!text.empty()) text += ',';
        if (kind == 1) text += '"' + keys[random() % keys.size()] + "\":";
        text += randomValue(random, depth - 1);
    }
    return kind == 1 ? "{" + text + "}" : "[" + text + "]";
}

TEST(JsonText, SaysTheSameAsTheWholeOfValuesAtRandom) {
    std::mt19937 random(7);
    int read = 0;
    for (int i = 0; i < 5'000; ++i) {
        const auto text = R"({"name":"a","route":{"legs":[)" + randomValue(random, 3) + "]" +
                          (random() % 2 == 0 ? R"(,"legs":)" + randomValue(random, 4) : "") + "}," +
                          "\"number\":" + randomValue(random, 2) + ",\"route\":" + randomValue(random, 5) +
                          "}";
        expectSame(text);
        if (fromText(text).starts_with('{')) ++read;
    }
    EXPECT_GT(read, 20);
}

} // namespace
} // namespace tarnly
