#include "TarnlySimulator/Api/HttpApi.hpp"

#include <gtest/gtest.h>

namespace tarnly::simulator {
namespace {

using Values = std::vector<std::string>;

TEST(Query, GivesAllValuesOfAKeyInTheirOrder) {
    EXPECT_EQ(queryValues("a=1&b=2&a=3", "a"), (Values{"1", "3"}));
    EXPECT_EQ(queryValues("", "a"), Values{});
    EXPECT_EQ(queryValues("a&&b", "a"), Values{});
}

TEST(Query, KeysAndValuesArePercentDecoded) {
    EXPECT_EQ(queryValues("filter%5Bname%5D=sim%2ftime+x", "filter[name]"), Values{"sim/time x"});
    EXPECT_EQ(queryValues("a=%", "a"), Values{"%"});
    EXPECT_EQ(queryValues("a=%4", "a"), Values{"%4"});
    EXPECT_EQ(queryValues("a=%zz", "a"), Values{"%zz"});
    EXPECT_EQ(queryValues("a=100%25", "a"), Values{"100%"});
}

} // namespace
} // namespace tarnly::simulator
