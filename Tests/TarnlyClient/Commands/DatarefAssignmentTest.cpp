#include "TarnlyClient/Commands/DatarefAssignment.hpp"

#include <gtest/gtest.h>

#include "TarnlyClient/Companion/ClientError.hpp"

namespace tarnly::client {
namespace {

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

} // namespace
} // namespace tarnly::client
