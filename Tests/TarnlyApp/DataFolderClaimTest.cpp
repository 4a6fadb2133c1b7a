#include "TarnlyApp/DataFolderClaim.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <thread>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

struct DataFolderClaimTest : testing::Test {
    std::string refusal() const {
        try {
            const DataFolderClaim claim(folder.path(), 0ms);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "none";
    }

    const test::TemporaryFolder folder;
};

TEST_F(DataFolderClaimTest, OneAtATimeAndTheOtherIsToldWho) {
    {
        const DataFolderClaim first(folder.path(), 0ms);
        EXPECT_EQ(first.problem(), std::nullopt);
        EXPECT_EQ(refusal(), "the data folder " + folder.path().string() + " is in use by process " +
                                 std::to_string(::getpid()) +
                                 "; end that companion, or give this one a folder of its own by --data-dir");
    }
    EXPECT_EQ(refusal(), "none");
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "companion.lock"));
}

TEST_F(DataFolderClaimTest, WhatAKilledOneLeftIsNoObstacle) {
    for (const char* left : {"", "1\n", "99999999999999999999999999999\n", "garbled"}) {
        folder.write("companion.lock", left);
        const DataFolderClaim first(folder.path(), 0ms);
        EXPECT_THAT(refusal(), testing::HasSubstr("process " + std::to_string(::getpid()) + ";"));
    }
}

TEST_F(DataFolderClaimTest, OneThatSaysNothingOfItselfIsAnotherProcess) {
    const DataFolderClaim first(folder.path(), 0ms);
    folder.write("companion.lock", "garbled");
    EXPECT_THAT(refusal(), testing::HasSubstr("in use by another process;"));
}

TEST_F(DataFolderClaimTest, AFolderThatCannotBeLockedIsAProblemAndNoObstacle) {
    std::filesystem::create_directory(folder.path() / "companion.lock");
    for (const auto& path : {folder.path(), folder.write("plain", "")}) {
        const DataFolderClaim claim(path, 0ms);
        EXPECT_THAT(claim.problem().value(),
                    testing::HasSubstr(path.string() + " cannot be locked against a second companion: "));
    }
}

TEST_F(DataFolderClaimTest, OneThatEndsJustNowIsWaitedFor) {
    auto first = std::make_unique<DataFolderClaim>(folder.path(), 0ms);
    std::thread ending([&] {
        std::this_thread::sleep_for(50ms);
        first.reset();
    });
    EXPECT_NO_THROW(DataFolderClaim(folder.path(), 60s));
    ending.join();
}

} // namespace
} // namespace tarnly
