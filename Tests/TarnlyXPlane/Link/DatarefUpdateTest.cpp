#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace tarnly {
namespace {

using Values = std::map<std::int64_t, double>;
using Arrays = std::map<std::int64_t, std::vector<double>>;

DatarefUpdate parseData(const std::string& data) {
    return parseDatarefUpdate(R"({"type":"dataref_update_values","data":{)" + data + "}}");
}

TEST(DatarefUpdate, NumbersAndArraysAreKeptApartAndForeignKeysSkipped) {
    const auto update = parseData(R"("12":3.5,"13":[1,2],"x":4)");
    EXPECT_EQ(update.values, (Values{{12, 3.5}}));
    EXPECT_EQ(update.arrayValues, (Arrays{{13, {1, 2}}}));
}

TEST(DatarefUpdate, KeysAreDecimalIntegersOf64Bits) {
    const auto update = parseData(R"("40003472032":1,"-5":2,"+6":3,"":4," 7":5,"8 ":6,"0x9":7,"1.0":8,
                                     "9223372036854775807":9,"9223372036854775808":10,"+-1":11,"-":12,"+":13)");
    EXPECT_EQ(update.values, (Values{{40003472032, 1}, {-5, 2}, {6, 3}, {INT64_MAX, 9}}));
}

TEST(DatarefUpdate, TrueAndFalseCountAsOneAndZero) {
    const auto update = parseData(R"("1":true,"2":false,"3":[true,false,0.5])");
    EXPECT_EQ(update.values, (Values{{1, 1}, {2, 0}}));
    EXPECT_EQ(update.arrayValues, (Arrays{{3, {1, 0, 0.5}}}));
}

TEST(DatarefUpdate, ValuesThatAreNoNumbersAreSkippedAlone) {
    const auto update = parseData(R"("1":"QUJD","2":null,"3":{},"4":[1,"2"],"5":[1,null],"6":[[1]],"7":7)");
    EXPECT_EQ(update.values, (Values{{7, 7}}));
    EXPECT_EQ(update.arrayValues, Arrays{});
}

TEST(DatarefUpdate, InfiniteNumbersAreSkippedAlone) {
    const auto update = parseData(R"("1":1e+9999,"2":-1e+9999,"3":[1,1e+9999],"4":4,"5":[5])");
    EXPECT_EQ(update.values, (Values{{4, 4}}));
    EXPECT_EQ(update.arrayValues, (Arrays{{5, {5}}}));
}

TEST(DatarefUpdate, EmptyArraysAreArrays) {
    EXPECT_EQ(parseData(R"("1":[])").arrayValues, (Arrays{{1, {}}}));
}

TEST(DatarefUpdate, IntegersBeyond64BitsAreNumbersToo) {
    const auto update = parseData(R"("1":18446744073709551615,"2":-9223372036854775808,"3":1e300)");
    EXPECT_EQ(update.values, (Values{{1, 0x1p64}, {2, -0x1p63}, {3, 1e300}}));
}

TEST(DatarefUpdate, OtherMessagesBringNothing) {
    for (const auto* text :
         {"", "{", "[]", "3", "{}", R"({"type":"result","req_id":1,"success":true,"data":{"1":1}})",
          R"({"data":{"1":1}})", R"({"type":5,"data":{"1":1}})", R"({"type":"dataref_update_values"})",
          R"({"type":"dataref_update_values","data":[1]})", R"({"type":"dataref_update_values","data":null})",
          R"({"type":"dataref_update_values","data":{"1":1}} x)"}) {
        const auto update = parseDatarefUpdate(text);
        EXPECT_TRUE(update.values.empty()) << text;
        EXPECT_TRUE(update.arrayValues.empty()) << text;
    }
}

} // namespace
} // namespace tarnly
