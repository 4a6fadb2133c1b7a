#include "TarnlyPlatform/Files/Folders.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

/// Sets an environment variable for the life of a test.
class Variable {
  public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) before_ = before;
        setenv(name, value, 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_); }

  private:
    const char* name_;
    std::optional<std::string> before_;
};

TEST(Folders, DataFolderFollowsXdgDataHome) {
    const Variable data("XDG_DATA_HOME", "/somewhere/data");
    EXPECT_EQ(applicationDataFolder(), "/somewhere/data/Tarnly");
}

TEST(Folders, RelativeXdgDataHomeIsIgnored) {
    const Variable data("XDG_DATA_HOME", "data");
    const Variable home("HOME", "/home/pilot");
    EXPECT_EQ(applicationDataFolder(), "/home/pilot/.local/share/Tarnly");
}

TEST(Folders, EmptyXdgDataHomeIsIgnored) {
    const Variable data("XDG_DATA_HOME", "");
    const Variable home("HOME", "/home/pilot");
    EXPECT_EQ(applicationDataFolder(), "/home/pilot/.local/share/Tarnly");
}

TEST(Folders, ConfigurationFolderFollowsXdgConfigHome) {
    const Variable configuration("XDG_CONFIG_HOME", "/somewhere/configuration");
    EXPECT_EQ(configurationFolder(), "/somewhere/configuration");
}

TEST(Folders, RelativeOrEmptyXdgConfigHomeIsIgnored) {
    const Variable home("HOME", "/home/pilot");
    for (const auto* ignored : {"configuration", ""}) {
        const Variable configuration("XDG_CONFIG_HOME", ignored);
        EXPECT_EQ(configurationFolder(), "/home/pilot/.config");
    }
}

TEST(Folders, ProgramPathIsThatOfTheRunningFile) {
    EXPECT_TRUE(programPath().is_absolute());
    EXPECT_TRUE(std::filesystem::equivalent(programPath(), "/proc/self/exe")) << programPath();
}

constexpr auto removedProgram = "TARNLY_TEST_REMOVED_PROGRAM";

/// Runs this test alone in a copy of the test program, which finds its own path in `removedProgram`.
int runThisTestIn(const std::filesystem::path& copy) {
    const Variable removed(removedProgram, copy.c_str());
    const auto command = "'" + copy.string() + "' --gtest_filter=Folders.ProgramPathOutlivesItsFile >&2";
    return std::system(command.c_str());
}

TEST(Folders, ProgramPathOutlivesItsFile) {
    if (const char* self = std::getenv(removedProgram)) {
        ASSERT_TRUE(std::filesystem::remove(self));
        EXPECT_EQ(programPath(), self);
        return;
    }
    const test::TemporaryFolder folder;
    const auto copy = folder.path() / "program (deleted)";
    std::filesystem::copy_file("/proc/self/exe", copy);
    EXPECT_EQ(runThisTestIn(copy), 0);
    EXPECT_FALSE(std::filesystem::exists(copy)) << "the test did not run in the copy";
}

constexpr auto installedProgram = "TARNLY_TEST_INSTALLED_PROGRAM";

TEST(Folders, DocumentsAreThoseBesideTheProgram) {
    if (const char* document = std::getenv(installedProgram)) {
        EXPECT_EQ(installedDocument("page.md"), document);
        EXPECT_EQ(installedDocument("other.md"), std::nullopt);
        return;
    }
    EXPECT_EQ(installedDocument("page.md"), std::nullopt); // where it was built
    const test::TemporaryFolder folder;
    const auto program = folder.path() / "bin/program";
    const auto document = folder.path() / "share/doc/tarnly/page.md";
    std::filesystem::create_directories(program.parent_path());
    std::filesystem::create_directories(document.parent_path());
    std::filesystem::copy_file("/proc/self/exe", program);
    std::ofstream(document) << "A page.";
    const Variable installed(installedProgram, document.c_str());
    const auto command =
        "'" + program.string() + "' --gtest_filter=Folders.DocumentsAreThoseBesideTheProgram >&2";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

} // namespace
} // namespace tarnly
