#include "TarnlyApp/CompanionOptions.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <sstream>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Files/Folders.hpp"

namespace tarnly {
namespace {

using testing::HasSubstr;
using Status = LoginItem::Status;

class StartAtLoginTest : public testing::Test {
  protected:
    StartAtLoginTest() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }
    ~StartAtLoginTest() override { ::unsetenv("XDG_CONFIG_HOME"); }

    std::string entry(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder.path() / "autostart" / name).rdbuf();
        return text.str();
    }

    const test::TemporaryFolder folder;
    CompanionOptions options;
};

TEST_F(StartAtLoginTest, TheEntryStartsThisProgramWithoutAWindow) {
    const auto item = makeLoginItem(options);
    EXPECT_EQ(item->status(), Status::disabled);
    item->enable();
    EXPECT_EQ(item->status(), Status::enabled);
    EXPECT_THAT(entry("tarnly.desktop"), HasSubstr("Exec=" + programPath().string() + " --background\n"));
    item->disable();
    EXPECT_EQ(item->status(), Status::disabled);
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "autostart" / "tarnly.desktop"));
}

TEST_F(StartAtLoginTest, TheEntryLeavesTheOptionsOfThisStartToTheSettings) {
    options.port = 41234;
    options.name = "rig42";
    options.simulatorHost = "192.0.2.7";
    options.advertises = false;
    makeLoginItem(options)->enable();
    EXPECT_THAT(entry("tarnly.desktop"), HasSubstr("Exec=" + programPath().string() + " --background\n"));
}

TEST_F(StartAtLoginTest, AnEntryWithOptionsOfItsDayIsOutdatedAndMadeAnew) {
    const auto program = programPath().string();
    std::filesystem::create_directories(folder.path() / "autostart");
    std::ofstream(folder.path() / "autostart" / "tarnly.desktop")
        << "[Desktop Entry]\nExec=" << program << " --background --port=41234\nTryExec=" << program << "\n";
    const auto item = makeLoginItem(options);
    EXPECT_EQ(item->status(), Status::outdated);
    item->enable();
    EXPECT_EQ(item->status(), Status::enabled);
    EXPECT_THAT(entry("tarnly.desktop"), HasSubstr("Exec=" + program + " --background\n"));
}

TEST_F(StartAtLoginTest, TheEntryHasTheDataFolderFromTheRootOn) {
    options.dataFolder = "rig";
    makeLoginItem(options)->enable();
    const auto data = std::filesystem::absolute("rig").string();
    auto id = "tarnly" + data;
    std::ranges::replace_if(
        id, [](unsigned char letter) { return std::isalnum(letter) == 0; }, '-');
    EXPECT_THAT(entry(id + ".desktop"), HasSubstr(" --background --data-dir=" + data + "\n"));
}

TEST_F(StartAtLoginTest, EachDataFolderHasAnEntryOfItsOwn) {
    const auto usual = makeLoginItem(options);
    usual->enable();
    options.dataFolder = "/home/pilot/rig 2";
    const auto other = makeLoginItem(options);
    EXPECT_EQ(other->status(), Status::disabled);
    other->enable();
    EXPECT_THAT(entry("tarnly-home-pilot-rig-2.desktop"), HasSubstr("--data-dir=/home/pilot/rig 2"));
    other->disable();
    EXPECT_EQ(usual->status(), Status::enabled);
}

TEST_F(StartAtLoginTest, ADataFolderHasOneEntryHoweverItIsSpelt) {
    options.dataFolder = "/home/pilot/rig";
    makeLoginItem(options)->enable();
    for (const char* same : {"/home/pilot/rig/", "/home/pilot/./rig", "/home/pilot/x/../rig//"}) {
        options.dataFolder = same;
        EXPECT_EQ(makeLoginItem(options)->status(), Status::enabled) << same;
    }
    options.dataFolder = applicationDataFolder();
    makeLoginItem(options)->enable();
    options.dataFolder.reset();
    EXPECT_EQ(makeLoginItem(options)->status(), Status::enabled) << "the usual folder, named";
}

} // namespace
} // namespace tarnly
