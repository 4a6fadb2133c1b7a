#include "TarnlySimulator/World/Value.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using Numbers = std::vector<double>;

const Value three = Numbers{1, 2, 3};

Value singles(const Value& present, const char* json, std::optional<std::int64_t> index = std::nullopt) {
    return written(present, ValueType::singles, parseJson(json), index);
}

std::string codeOf(const Value& present, ValueType type, const char* json,
                   std::optional<std::int64_t> index = std::nullopt) {
    try {
        written(present, type, parseJson(json), index);
    } catch (const WorldError& error) {
        return test::codeOf(error);
    }
    return "accepted";
}

TEST(ValueWriting, ANumberReplacesANumber) {
    EXPECT_EQ(written(1.0, ValueType::single, parseJson("2.5"), std::nullopt), Value(2.5));
    EXPECT_EQ(written(1.0, ValueType::integer, parseJson("2.9"), std::nullopt), Value(2.0));
    EXPECT_EQ(written(1.0, ValueType::integer, parseJson("-2.9"), std::nullopt), Value(-2.0));
}

TEST(ValueWriting, ANumberWithoutAnIndexFillsTheWholeArray) {
    EXPECT_EQ(singles(three, "0.5"), Value(Numbers{0.5, 0.5, 0.5}));
}

TEST(ValueWriting, AnIndexChoosesTheElement) {
    EXPECT_EQ(singles(three, "9", 0), Value(Numbers{9, 2, 3}));
    EXPECT_EQ(singles(three, "9", 2), Value(Numbers{1, 2, 9}));
}

TEST(ValueWriting, AnArrayGoesToTheElementsFromTheIndexOn) {
    EXPECT_EQ(singles(three, "[7,8]"), Value(Numbers{7, 8, 3}));
    EXPECT_EQ(singles(three, "[7,8]", 1), Value(Numbers{1, 7, 8}));
    EXPECT_EQ(singles(three, "[]", 1), three);
}

TEST(ValueWriting, IndicesOutsideAreRefused) {
    EXPECT_EQ(codeOf(three, ValueType::singles, "9", 3), "invalid_index");
    EXPECT_EQ(codeOf(three, ValueType::singles, "9", -1), "invalid_index");
    EXPECT_EQ(codeOf(three, ValueType::singles, "[7,8]", 2), "invalid_value");
    EXPECT_EQ(codeOf(Numbers{}, ValueType::singles, "1"), "invalid_index");
    EXPECT_EQ(codeOf(1.0, ValueType::single, "9", 0), "invalid_index");
}

TEST(ValueWriting, OtherKindsAreRefused) {
    for (const char* json : {"true", "null", "\"1\"", "{}", "[1]"})
        EXPECT_EQ(codeOf(1.0, ValueType::single, json), "invalid_value") << json;
    EXPECT_EQ(codeOf(three, ValueType::singles, "[1,\"x\"]"), "invalid_value");
    EXPECT_EQ(codeOf(std::string(4, '\0'), ValueType::data, "1"), "invalid_value");
    EXPECT_EQ(codeOf(std::string(4, '\0'), ValueType::data, "\"%\""), "invalid_value");
    EXPECT_EQ(codeOf(std::string(2, '\0'), ValueType::data, "\"TjEyMw==\""), "invalid_value");
}

TEST(ValueWriting, DataArePaddedToTheirLength) {
    EXPECT_EQ(written(std::string("ABCD"), ValueType::data, parseJson("\"TjE=\""), std::nullopt),
              Value(std::string("N1\0\0", 4)));
}

TEST(ValueWriting, Base64IsReadWithAndWithoutPadding) {
    EXPECT_EQ(decodedBase64(""), "");
    EXPECT_EQ(decodedBase64("Zg=="), "f");
    EXPECT_EQ(decodedBase64("Zm8="), "fo");
    EXPECT_EQ(decodedBase64("Zm9v"), "foo");
    EXPECT_EQ(decodedBase64("Zm9vYg"), "foob");
    EXPECT_EQ(decodedBase64("+/8="), "\xFB\xFF");
    for (const char* bad : {"Z", "Zm9vY", "Zm9*", "=", "Z===", "Zm 9"})
        EXPECT_EQ(decodedBase64(bad), std::nullopt) << bad;
}

} // namespace
} // namespace tarnly::simulator
