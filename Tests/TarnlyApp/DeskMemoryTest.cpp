#include "TarnlyApp/DeskMemory.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

/// What the workers were given, in whose hands it is when each is done.
struct Workers {
    DeskMemoryKeeper::DoAside take() {
        return [this](std::function<void()> work) { works.push_back(std::move(work)); };
    }

    std::vector<std::function<void()>> works;
};

TEST(DeskMemoryKeeper, TheLastOneStaysWhicheverWorkerComesFirst) {
    const test::TemporaryFolder folder;
    const DeskMemory first{true, {"192.168.1.30"}};
    const DeskMemory last{true, {"192.168.1.30", "192.168.1.31"}};
    for (const bool isReversed : {false, true}) {
        Workers workers;
        DeskMemoryKeeper keeper(folder.path(), workers.take());
        keeper.keep(first);
        keeper.keep(last);
        ASSERT_EQ(workers.works.size(), 2U);
        if (isReversed) std::swap(workers.works[0], workers.works[1]);
        for (const auto& work : workers.works)
            work();
        EXPECT_EQ(DeskMemory::in(folder.path()), last) << isReversed;
        keeper.keep(first);
        workers.works.back()();
        EXPECT_EQ(DeskMemory::in(folder.path()), first) << "one that comes later is the last one then";
    }
}

TEST(DeskMemoryKeeper, ManyWorkersKeepTheLastOne) {
    const test::TemporaryFolder folder;
    Workers workers;
    DeskMemoryKeeper keeper(folder.path(), workers.take());
    std::vector<std::jthread> threads;
    DeskMemory memory;
    for (int i = 0; i < 50; ++i) {
        memory.knownDevices.push_back("10.0.0." + std::to_string(i));
        keeper.keep(memory);
        threads.emplace_back(workers.works.back());
    }
    threads.clear();
    EXPECT_EQ(DeskMemory::in(folder.path()), memory);
}

TEST(DeskMemoryKeeper, MayGoBeforeTheWorkers) {
    const test::TemporaryFolder folder;
    Workers workers;
    const DeskMemory memory{true, {}};
    DeskMemoryKeeper(folder.path(), workers.take()).keep(memory);
    workers.works.front()();
    EXPECT_EQ(DeskMemory::in(folder.path()), memory);
}

} // namespace
} // namespace tarnly
