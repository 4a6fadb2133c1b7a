#include "TarnlyCore/Discovery/Visitors.hpp"

#include <gtest/gtest.h>

#include "Support/Networks.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using test::networkOf;
using Kind = Visitors::Kind;

struct VisitorsTest : testing::Test {
    std::chrono::sys_seconds now{100s};
    Visitors visitors{[this] { return now; }};
};

TEST_F(VisitorsTest, TheLastOfEachKindIsKept) {
    visitors.note(Kind::page, networkOf("192.0.2.7"));
    now += 5s;
    visitors.note(Kind::page, networkOf("192.0.2.8"));
    visitors.note(Kind::refused, networkOf("2001:db8::1"));
    EXPECT_EQ(visitors.of(Kind::page)->count, 2);
    EXPECT_EQ(visitors.of(Kind::page)->lastFrom, "192.0.2.8");
    EXPECT_EQ(visitors.of(Kind::page)->lastAt, now);
    EXPECT_EQ(visitors.of(Kind::refused)->count, 1);
    EXPECT_EQ(visitors.of(Kind::refused)->lastFrom, "2001:db8::");
    EXPECT_FALSE(visitors.of(Kind::paired));
}

TEST_F(VisitorsTest, ThisComputerIsNoVisitor) {
    for (const char* own : {"127.0.0.1", "::1"})
        visitors.note(Kind::paired, networkOf(own));
    EXPECT_FALSE(visitors.of(Kind::paired));
}

} // namespace
} // namespace tarnly
