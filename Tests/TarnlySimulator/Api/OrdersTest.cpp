#include "TarnlySimulator/Api/Orders.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TarnlySimulator/Api/ApiError.hpp"
#include "TarnlySimulator/StandIn.hpp"

namespace tarnly::simulator {
namespace {

using namespace std::chrono_literals;

class OrdersTest : public testing::Test {
  protected:
    int dropped = 0;
    std::vector<Restart> restarts;
    World world{test::standInOptions()};
    Orders orders{world, {[this] { ++dropped; }, [this](const Restart& how) { restarts.push_back(how); }}};
};

TEST_F(OrdersTest, EveryQuirkIsSwitchedByItsNameWithEitherDash) {
    for (const QuirkSwitch& quirk : quirkSwitches()) {
        std::string underscored = quirk.name;
        std::ranges::replace(underscored, '-', '_');
        orders.obey(underscored + " on");
        EXPECT_TRUE(world.quirks.*quirk.on) << quirk.name;
        orders.obey(std::string(quirk.name) + " off");
        EXPECT_FALSE(world.quirks.*quirk.on) << quirk.name;
    }
}

TEST_F(OrdersTest, SomeQuirksTakeATime) {
    orders.obey("handshake_late on 12000");
    EXPECT_EQ(world.quirks.handshakeLateBy, 12s);
    orders.obey("idle-close on 300");
    EXPECT_EQ(world.quirks.idleCloseAfter, 300ms);
    orders.obey("slow on 0");
    EXPECT_EQ(world.quirks.slowBy, 0ms);
    EXPECT_TRUE(world.quirks.handshakeLate && world.quirks.idleClose && world.quirks.slow);
}

TEST_F(OrdersTest, Drops) {
    orders.obey("drop");
    EXPECT_EQ(dropped, 1);
}

TEST_F(OrdersTest, ARestartGoesAsItIsTold) {
    for (const char* line : {"restart", "restart swapped", "  restart  fresh away 1500 "})
        orders.obey(line);
    ASSERT_EQ(restarts.size(), 3u);
    EXPECT_FALSE(restarts[0].isSwapped || restarts[0].isFresh);
    EXPECT_EQ(restarts[0].away, 0ms);
    EXPECT_TRUE(restarts[1].isSwapped && !restarts[1].isFresh);
    EXPECT_TRUE(restarts[2].isFresh && !restarts[2].isSwapped);
    EXPECT_EQ(restarts[2].away, 1500ms);
}

TEST_F(OrdersTest, AnotherAircraftComesWithoutItsAddOns) {
    orders.obey("aircraft 500");
    EXPECT_TRUE(world.quirks.lateDatarefs);
    world.advance(0.5);
    EXPECT_FALSE(world.quirks.lateDatarefs);
    orders.obey("aircraft");
    world.advance(2.9);
    EXPECT_TRUE(world.quirks.lateDatarefs);
    world.advance(0.1);
    EXPECT_FALSE(world.quirks.lateDatarefs);
}

TEST_F(OrdersTest, AFlightIsLoadedFromTheMainMenu) {
    orders.obey("main_menu on");
    orders.obey("load Output/situations/Short final.sit");
    EXPECT_FALSE(world.quirks.mainMenu);
    EXPECT_EQ(world.flight().phase(), "final");
    orders.obey("load");
    EXPECT_EQ(world.flight().phase(), "cruise");
}

TEST_F(OrdersTest, WhatIsNoOrderChangesNothing) {
    for (const char* line :
         {"", " ", "dance", "silent", "silent maybe", "silent on 5", "silent off 5", "slow on x",
          "slow on -1", "slow on 600001", "slow on 5 5", "drop now", "restart away", "restart away soon",
          "restart fresh swapped", "restart away 5 swapped", "aircraft soon", "aircraft 5 5", "Drop"}) {
        EXPECT_THROW(orders.obey(line), ApiError) << line;
    }
    EXPECT_EQ(dropped, 0);
    EXPECT_TRUE(restarts.empty());
    EXPECT_FALSE(world.quirks.silent || world.quirks.slow || world.quirks.lateDatarefs);
}

} // namespace
} // namespace tarnly::simulator
