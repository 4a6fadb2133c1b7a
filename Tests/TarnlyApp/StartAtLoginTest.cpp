#include "TarnlyApp/StartAtLogin.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using testing::HasSubstr;

class StartAtLoginTest : public testing::Test {
  protected:
    StartAtLoginTest() { ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1); }
    ~StartAtLoginTest() override { ::unsetenv("XDG_CONFIG_HOME"); }

    std::string entry() const {
        std::ostringstream text;
        text << std::ifstream(folder.path() / "autostart" / "tarnly.desktop").rdbuf();
        return text.str();
    }

    const test::TemporaryFolder folder;
    CompanionOptions options;
};

TEST_F(StartAtLoginTest, TheEntryStartsTheApplicationWithoutAWindow) {
    const auto item = makeLoginItem("/bin/sh", options);
    EXPECT_EQ(item->status(), LoginItem::Status::notRegistered);
    item->registerItem();
    EXPECT_EQ(item->status(), LoginItem::Status::enabled);
    EXPECT_THAT(entry(), HasSubstr("Exec=/bin/sh --background\n"));
    item->unregisterItem();
    EXPECT_EQ(item->status(), LoginItem::Status::notRegistered);
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "autostart" / "tarnly.desktop"));
}

TEST_F(StartAtLoginTest, TheEntryKeepsTheOptionsOfThisStart) {
    options.port = 28086;
    options.dataFolder = "/data";
    makeLoginItem("/bin/sh", options)->registerItem();
    EXPECT_THAT(entry(), HasSubstr("Exec=/bin/sh --background --port=28086 --data-dir=/data\n"));
}

TEST_F(StartAtLoginTest, TheApplicationIsBesideTheRunningProgram) {
    EXPECT_EQ(applicationBesideThisProgram().filename(), "tarnly");
    EXPECT_TRUE(applicationBesideThisProgram().is_absolute());
}

} // namespace
} // namespace tarnly
