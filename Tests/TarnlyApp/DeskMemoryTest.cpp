#include "TarnlyApp/DeskMemory.hpp"

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

TEST(DeskMemory, ComesBackAtTheNextStart) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(DeskMemory::in(folder.path()), DeskMemory());
    const DeskMemory memory{true, {"192.168.1.30"}};
    memory.keepIn(folder.path() / "new");
    EXPECT_EQ(DeskMemory::in(folder.path() / "new"), memory);
}

TEST(DeskMemory, WhoHasSettingsHasSeenThePanel) {
    const test::TemporaryFolder folder;
    folder.write("settings.json", "{}");
    EXPECT_TRUE(DeskMemory::in(folder.path()).isIntroduced);
}

TEST(DeskMemory, WhatCannotBeReadOrKeptIsForgotten) {
    const test::TemporaryFolder folder;
    folder.write("desktop.json", "garbled");
    EXPECT_EQ(DeskMemory::in(folder.path()), DeskMemory());
    const DeskMemory memory{true, {}};
    memory.keepIn(folder.path() / "desktop.json");
    EXPECT_EQ(DeskMemory::in(folder.path()), DeskMemory());
    memory.keepIn(folder.path());
    EXPECT_EQ(DeskMemory::in(folder.path()), memory);
}

} // namespace
} // namespace tarnly
