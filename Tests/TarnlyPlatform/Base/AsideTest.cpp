#include "TarnlyPlatform/Base/Aside.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <thread>

namespace tarnly {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 60s;

TEST(AsideTest, WorkIsDoneOnAnotherThread) {
    const auto there = aside(patience, [] { return std::this_thread::get_id(); });
    ASSERT_TRUE(there);
    EXPECT_NE(*there, std::this_thread::get_id());
}

TEST(AsideTest, WhatItThrowsIsThrown) {
    const auto fail = []() -> int { throw std::runtime_error("no such folder"); };
    EXPECT_THROW(aside(patience, fail), std::runtime_error);
}

TEST(AsideTest, WhatHangsIsLeftBehind) {
    const auto never = std::make_shared<std::promise<void>>();
    const auto left = std::make_shared<std::promise<void>>();
    const auto hang = [never, left] {
        never->get_future().wait();
        left->set_value();
        return 1;
    };
    EXPECT_EQ(aside(1ms, hang), std::nullopt);
    never->set_value();
    left->get_future().wait();
}

} // namespace
} // namespace tarnly
