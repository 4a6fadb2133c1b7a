#include "TarnlyApp/SettingsSaver.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// A disk whose saves a test holds.
struct Disk {
    std::mutex mutex;
    std::condition_variable changed;
    bool hangs = false;
    std::size_t begun = 0;
    std::vector<std::string> saved;

    SettingsSaver::Save save() {
        return [this](const AppSettings& settings) {
            std::unique_lock lock(mutex);
            ++begun;
            changed.notify_all();
            changed.wait(lock, [this] { return !hangs; });
            saved.push_back(settings.password.value_or(""));
            if (settings.password == "full") throw std::runtime_error("no room");
        };
    }
    void setHangs(bool value) {
        const std::lock_guard lock(mutex);
        hangs = value;
        changed.notify_all();
    }
    void waitUntilBegun() {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 60s, [this] { return begun > 0; }));
    }
};

struct SettingsSaverTest : testing::Test {
    Disk disk;
    std::optional<SettingsSaver> saver{std::in_place, disk.save()};
};

TEST_F(SettingsSaverTest, NobodyWaitsForADiskAndWhatWaitsForItIsSavedOnce) {
    disk.setHangs(true);
    saver->save({"a", false});
    disk.waitUntilBegun();
    // All of this would hang otherwise, as the disk does not come back before.
    for (const char* password : {"ab", "abc", "abcd"})
        saver->save({password, false});
    disk.setHangs(false);
    EXPECT_TRUE(saver->finish());
    EXPECT_THAT(disk.saved, ElementsAre("a", "abcd"));
}

TEST_F(SettingsSaverTest, ItsEndWaitsForWhatIsToBeSaved) {
    saver->save({"a", false});
    EXPECT_TRUE(saver->finish());
    saver->save({"b", false});
    saver.reset();
    EXPECT_THAT(disk.saved, ElementsAre("a", "b"));
}

TEST_F(SettingsSaverTest, WhatFailsIsLostAlone) {
    saver->save({"full", false});
    EXPECT_TRUE(saver->finish());
    saver->save({"a", false});
    saver.reset();
    EXPECT_THAT(disk.saved, ElementsAre("full", "a"));
}

TEST_F(SettingsSaverTest, WithoutAnythingToSaveItEndsAtOnce) { EXPECT_TRUE(saver->finish()); }

} // namespace
} // namespace tarnly
