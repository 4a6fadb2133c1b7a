#include "TarnlyPlatform/Json/PlacedJson.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly {
namespace {

/// As `parseJson` has it.
boost::json::value plain(const PlacedJson& json) {
    if (json.value.is_array()) {
        boost::json::array list;
        for (const auto& element : json.elements)
            list.push_back(plain(element));
        return list;
    }
    if (!json.value.is_object()) return json.value;
    boost::json::object object;
    for (std::size_t index = 0; index < json.keys.size(); ++index)
        object[json.keys[index].text] = plain(json.elements[index]);
    return object;
}

/// Absent where the text is taken.
std::optional<std::size_t> errorAt(std::string_view text) {
    try {
        parsePlacedJson(text);
        return std::nullopt;
    } catch (const JsonTextError& error) {
        return error.at();
    }
}

/// The key or value at each place begins with the character that stands there.
void expectPlaces(const PlacedJson& json, std::string_view text) {
    ASSERT_LT(json.at, text.size());
    const char first = text[json.at];
    EXPECT_EQ(json.value.is_object(), first == '{');
    EXPECT_EQ(json.value.is_array(), first == '[');
    EXPECT_EQ(json.value.is_string(), first == '"');
    for (const auto& key : json.keys)
        EXPECT_EQ(text.substr(key.at, 1), "\"");
    for (const auto& element : json.elements)
        expectPlaces(element, text);
}

TEST(PlacedJson, KnowsWhereKeysAndValuesStand) {
    constexpr std::string_view text = R"( {"a" : [1, -2.5e1 ,"x\"]"], "b":{"":null},"c\\":true })";
    const auto json = parsePlacedJson(text);
    EXPECT_EQ(plain(json), parseJson(text));
    EXPECT_EQ(json.at, 1U);
    EXPECT_EQ(json.keys[0].at, text.find("\"a\""));
    EXPECT_EQ(json.keys[2].at, text.find("\"c"));
    EXPECT_EQ(json.elements[0].at, text.find('['));
    EXPECT_EQ(json.elements[0].elements[0].at, text.find('1'));
    EXPECT_EQ(json.elements[0].elements[1].at, text.find("-2"));
    EXPECT_EQ(json.elements[0].elements[2].at, text.find("\"x"));
    EXPECT_EQ(json.elements[1].keys[0].at, text.find("\"\""));
    EXPECT_EQ(json.elements[1].elements[0].at, text.find("null"));
    EXPECT_EQ(json.elements[2].at, text.find("true"));
    EXPECT_EQ(parsePlacedJson("7").at, 0U);
}

TEST(PlacedJson, OfAKeyThatIsGivenTwiceTheLastCounts) {
    const auto json = parsePlacedJson(R"({"a":1,"b":2,"a":3})");
    EXPECT_EQ(json.keys.size(), 3U);
    ASSERT_NE(json.find("a"), nullptr);
    EXPECT_EQ(json.find("a")->value, 3);
    EXPECT_EQ(json.find("c"), nullptr);
    EXPECT_EQ(parsePlacedJson("[1]").find("a"), nullptr);
}

TEST(PlacedJson, TellsWhereATextStopsBeingJson) {
    EXPECT_EQ(errorAt("[1]"), std::nullopt);
    EXPECT_EQ(errorAt("[1,}"), 3U);
    EXPECT_EQ(errorAt("nonsense"), 0U);
    EXPECT_EQ(errorAt("[] \n []"), 5U);
    EXPECT_EQ(errorAt("[1,\n\n"), 3U);
    EXPECT_EQ(errorAt(" \n"), 0U);
    EXPECT_EQ(errorAt(""), 0U);
    EXPECT_EQ(errorAt("[1, 1e999, 2]"), 4U);
    EXPECT_EQ(errorAt("\xEF\xBB\xBF[]"), 0U);
    EXPECT_EQ(errorAt(std::string(65, '[')), 64U);
}

TEST(PlacedJson, ReadsWhatIsReadElsewhere) {
    const std::string pieces[] = {"{",        "}",
                                  "[",        "]",
                                  ",",        ":",
                                  "\"a\"",    "\"\"",
                                  "1",        "-0",
                                  "0.1",      " ",
                                  "\n",       "true",
                                  "null",     "1e5",
                                  "1e400",    "\"\\u00e9\"",
                                  "\"\\\\\"", "-",
                                  "\"",       "9223372036854775808"};
    std::mt19937 random(42);
    int taken = 0;
    for (int round = 0; round < 30'000; ++round) {
        std::string text = round % 2 == 0 ? "[" : "{\"k\":";
        for (auto left = random() % 6; left > 0; --left)
            text += pieces[random() % std::size(pieces)] + (random() % 3 == 0 ? "," : "");
        if (text.ends_with(',')) text.pop_back();
        text += round % 2 == 0 ? "]" : "}";
        std::optional<boost::json::value> expected;
        try {
            expected = parseJson(text);
        } catch (const JsonError&) {
            ASSERT_NE(errorAt(text), std::nullopt) << text;
            continue;
        }
        ++taken;
        const auto json = parsePlacedJson(text);
        ASSERT_EQ(plain(json), *expected) << text;
        expectPlaces(json, text);
    }
    EXPECT_GT(taken, 1000);
}

} // namespace
} // namespace tarnly
