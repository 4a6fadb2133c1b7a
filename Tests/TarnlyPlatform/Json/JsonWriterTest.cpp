#include "TarnlyPlatform/Json/JsonWriter.hpp"

#include <gtest/gtest.h>

#include <limits>

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

TEST(JsonWriter, TakeLeavesTheWriterEmpty) {
    JsonWriter writer;
    writer.integer(1);
    EXPECT_EQ(writer.take(), "1");
    writer.integer(2);
    EXPECT_EQ(writer.take(), "2");
}

} // namespace
} // namespace tarnly
