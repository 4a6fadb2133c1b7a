#include "TarnlyXPlane/Datarefs.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(IndexedName, IndexInBracketsAtTheEnd) {
    EXPECT_EQ(parseIndexedName("sim/a[3]"), (IndexedName{"sim/a", 3}));
    EXPECT_EQ(parseIndexedName("sim/a[007]"), (IndexedName{"sim/a", 7}));
    EXPECT_EQ(parseIndexedName("[0]"), (IndexedName{"", 0}));
}

TEST(IndexedName, SignsParse) {
    EXPECT_EQ(parseIndexedName("sim/a[+3]"), (IndexedName{"sim/a", 3}));
    EXPECT_EQ(parseIndexedName("sim/a[-1]"), (IndexedName{"sim/a", -1}));
}

TEST(IndexedName, SixtyFourBitsAreTheLimit) {
    EXPECT_EQ(parseIndexedName("a[9223372036854775807]"), (IndexedName{"a", INT64_MAX}));
    EXPECT_EQ(parseIndexedName("a[-9223372036854775808]"), (IndexedName{"a", INT64_MIN}));
    EXPECT_EQ(parseIndexedName("a[9223372036854775808]"), std::nullopt);
    EXPECT_EQ(parseIndexedName("a[-9223372036854775809]"), std::nullopt);
}

TEST(IndexedName, OtherNamesAreWhole) {
    for (const auto* name : {"",        "sim/a",  "sim/a[]", "sim/a[x]", "sim/a[3", "sim/a3]", "sim/a[3]b",
                             "a[1][0]", "a[[1]]", "a[ 1]",   "a[1 ]",    "a[1.0]",  "a[+]",    "a[-]",
                             "a[+-1]",  "a[--1]", "a[0x1]",  "]",        "[",       "]["}) {
        EXPECT_EQ(parseIndexedName(name), std::nullopt) << name;
    }
}

} // namespace
} // namespace tarnly
