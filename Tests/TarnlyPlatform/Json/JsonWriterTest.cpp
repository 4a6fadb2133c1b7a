#include "TarnlyPlatform/Json/JsonWriter.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace tarnly {
namespace {

std::string written(double value) {
    JsonWriter writer;
    writer.number(value);
    return writer.take();
}

std::string written(std::string_view value) {
    JsonWriter writer;
    writer.string(value);
    return writer.take();
}

TEST(JsonWriter, WritesCompactlyInTheOrderOfTheCalls) {
    JsonWriter writer;
    writer.beginObject();
    writer.key("b");
    writer.integer(-7);
    writer.key("a");
    writer.beginArray();
    writer.boolean(true);
    writer.null();
    writer.beginObject();
    writer.endObject();
    writer.beginArray();
    writer.endArray();
    writer.string("x");
    writer.endArray();
    writer.endObject();
    EXPECT_EQ(writer.take(), R"({"b":-7,"a":[true,null,{},[],"x"]})");
}

TEST(JsonWriter, DoublesTakeTheShortestForm) {
    EXPECT_EQ(written(3.5), "3.5");
    EXPECT_EQ(written(1.0), "1");
    EXPECT_EQ(written(-0.1), "-0.1");
    EXPECT_EQ(written(1e21), "1e+21");
    EXPECT_EQ(written(0.6666666666666666), "0.6666666666666666");
    EXPECT_EQ(written(-2.2250738585072014e-308), "-2.2250738585072014e-308");
}

TEST(JsonWriter, NumbersThatAreNotFiniteFail) {
    JsonWriter writer;
    EXPECT_THROW(writer.number(std::numeric_limits<double>::infinity()), JsonError);
    EXPECT_THROW(writer.number(-std::numeric_limits<double>::infinity()), JsonError);
    EXPECT_THROW(writer.number(std::numeric_limits<double>::quiet_NaN()), JsonError);
}

TEST(JsonWriter, StringsAreEscaped) {
    EXPECT_EQ(written("a/b"), R"("a\/b")");
    EXPECT_EQ(written("\"\\"), R"("\"\\")");
    EXPECT_EQ(written("\b\f\n\r\t"), R"("\b\f\n\r\t")");
    EXPECT_EQ(written(std::string_view("\0\x1F\x7F", 3)), "\"\\u0000\\u001f\x7F\"");
    EXPECT_EQ(written("\u00E9\U0001F6E9"), "\"\u00E9\U0001F6E9\"");
}

TEST(JsonWriter, WholeDoublesAreDigits) {
    EXPECT_EQ(written(100000.0), "100000");
    EXPECT_EQ(written(-9999999999999998.0), "-9999999999999998");
    EXPECT_EQ(written(-0.0), "-0");
}

TEST(JsonWriter, EscapesAreFoundAtEachPlaceOfAString) {
    for (std::size_t before = 0; before < 20; ++before) {
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string head(before, 'a');
            const std::string tail(after, '~');
            EXPECT_EQ(written(head + "/" + tail), '"' + head + "\\/" + tail + '"');
            EXPECT_EQ(written(head + "\x1F" + tail), '"' + head + "\\u001f" + tail + '"');
            EXPECT_EQ(written(head + "\u00E9" + tail), '"' + head + "\u00E9" + tail + '"');
        }
    }
}

TEST(JsonWriter, MalformedBytesBecomeReplacementCharacters) {
    EXPECT_EQ(written("a\xFFz"), "\"a\uFFFDz\"");
    EXPECT_EQ(written("sim/\xC3\x28/flights"), "\"sim\\/\uFFFD(\\/flights\"");
    EXPECT_EQ(written("eight by\xF0\x9F\x9B"), "\"eight by\uFFFD\"");
    JsonWriter writer;
    writer.beginObject();
    writer.key("\x80");
    writer.integer(1);
    writer.endObject();
    EXPECT_EQ(writer.take(), "{\"\uFFFD\":1}");
}

TEST(JsonWriter, TakeLeavesTheWriterEmpty) {
    JsonWriter writer;
    writer.integer(1);
    EXPECT_EQ(writer.take(), "1");
    writer.integer(2);
    EXPECT_EQ(writer.take(), "2");
}

TEST(JsonWriter, PiecesMakeOneText) {
    JsonWriter writer;
    writer.beginArray();
    writer.integer(1);
    EXPECT_EQ(writer.size(), 2U);
    auto text = writer.takePiece();
    EXPECT_EQ(writer.size(), 0U);
    writer.integer(2);
    writer.endArray();
    text += writer.takePiece();
    EXPECT_EQ(text, "[1,2]");
}

} // namespace
} // namespace tarnly
