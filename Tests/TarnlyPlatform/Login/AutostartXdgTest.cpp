#include "TarnlyPlatform/Login/AutostartXdg.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using Status = LoginItem::Status;

class AutostartEntryTest : public testing::Test {
  protected:
    AutostartEntryTest() { std::filesystem::permissions(program_, std::filesystem::perms::owner_all); }

    AutostartEntry entry() const { return entryFor({program_.string(), "--hidden"}); }
    AutostartEntry entryFor(std::vector<std::string> command) const {
        return {autostart_, {"tarnly", "Tarnly", "Connects a tablet", "tarnly-icon", std::move(command)}};
    }

    /// The status of an entry with `lines` in its main group.
    Status statusOf(const std::string& lines) const { return statusOfText("[Desktop Entry]\n" + lines); }
    Status statusOfText(const std::string& text) const {
        std::filesystem::create_directories(autostart_);
        std::ofstream(file_, std::ios::binary) << text;
        return entry().status();
    }

    std::string exec() const { return "Exec=" + program_.string() + " --hidden\n"; }

    std::string text() const {
        std::ifstream stream(file_, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const test::TemporaryFolder folder_;
    const std::filesystem::path program_ = folder_.write("program", "#!/bin/sh\n");
    const std::filesystem::path autostart_ = folder_.path() / "configuration" / "autostart";
    const std::filesystem::path file_ = autostart_ / "tarnly.desktop";
};

TEST_F(AutostartEntryTest, IsNotRegisteredBeforeAnybodyRegistersIt) {
    EXPECT_EQ(entry().status(), Status::disabled);
    EXPECT_FALSE(std::filesystem::exists(autostart_));
}

TEST_F(AutostartEntryTest, WritesTheEntry) {
    entry().enable();
    EXPECT_EQ(text(),
              "[Desktop Entry]\n"
              "Type=Application\n"
              "Name=Tarnly\n"
              "Comment=Connects a tablet\n"
              "Icon=tarnly-icon\n"
              "Exec=" +
                  program_.string() +
                  " --hidden\n"
                  "TryExec=" +
                  program_.string() +
                  "\n"
                  "Terminal=false\n"
                  "X-GNOME-Autostart-enabled=true\n");
    EXPECT_EQ(entry().status(), Status::enabled);
}

TEST_F(AutostartEntryTest, EscapesTheCommandTwice) {
    entryFor({"/opt/my programs/50%/tarnly", R"(C:\X "Plane" $1)"}).enable();
    EXPECT_NE(
        text().find("\nExec=\"/opt/my programs/50%%/tarnly\" \"C:\\\\\\\\X \\\\\"Plane\\\\\" \\\\$1\"\n"),
        std::string::npos)
        << text();
    EXPECT_NE(text().find("\nTryExec=/opt/my programs/50%/tarnly\n"), std::string::npos) << text();
}

TEST_F(AutostartEntryTest, FindsAProgramWithAnAwkwardName) {
    const auto program = folder_.write("a \"b\" %c \\d $e", "#!/bin/sh\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    auto awkward = entryFor({program.string()});
    awkward.enable();
    EXPECT_EQ(awkward.status(), Status::enabled);
    std::filesystem::remove(program);
    EXPECT_EQ(awkward.status(), Status::broken);
}

TEST_F(AutostartEntryTest, LeavesEmptyKeysOut) {
    AutostartEntry(autostart_, {"tarnly", "Tarnly", "", "", {"/t"}}).enable();
    EXPECT_EQ(text().find("Comment"), std::string::npos);
    EXPECT_EQ(text().find("Icon"), std::string::npos);
}

TEST_F(AutostartEntryTest, RefusesWhatAnEntryCannotCarry) {
    for (const auto& command : std::vector<std::vector<std::string>>{
             {}, {"tarnly"}, {"/opt/a=b/tarnly"}, {"/opt/tarnly", "two\nlines"}, {"/opt/\xFF"}}) {
        try {
            entryFor(command).enable();
            ADD_FAILURE() << testing::PrintToString(command);
        } catch (const LoginItemError& error) {
            EXPECT_EQ(error.which(), LoginItemError::Case::notRepresentable);
        }
    }
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(AutostartEntryTest, OtherArgumentsOfTheSameProgramAreOutdated) {
    const auto exec = "Exec=" + program_.string();
    EXPECT_EQ(statusOf(exec + " --hidden\n"), Status::enabled);
    for (const char* others : {"", " --hidden --port=1", " --shown"})
        EXPECT_EQ(statusOf(exec + others + "\n"), Status::outdated) << others;
    EXPECT_EQ(statusOf("Exec=/bin/sh --port=1\n"), Status::enabled) << "another program's";
    EXPECT_EQ(statusOf(exec + " --port=1\nHidden=true\n"), Status::disabled);
    EXPECT_EQ(entryFor({"tarnly"}).status(), Status::disabled)
        << "turned off, and without an entry of its own";
}

TEST_F(AutostartEntryTest, RegisteringTurnsAnEntryOnAgain) {
    ASSERT_EQ(statusOf(exec() + "Hidden=true\n"), Status::disabled);
    entry().enable();
    EXPECT_EQ(entry().status(), Status::enabled);
}

TEST_F(AutostartEntryTest, RegisteringReplacesALinkAndLeavesItsTarget) {
    const auto target = folder_.write("target", "of the link");
    std::filesystem::create_directories(autostart_);
    std::filesystem::create_symlink(target, file_);
    entry().enable();
    EXPECT_FALSE(std::filesystem::is_symlink(file_));
    EXPECT_EQ(std::filesystem::file_size(target), 11U);
    EXPECT_EQ(entry().status(), Status::enabled);
}

TEST_F(AutostartEntryTest, RegisteringSaysWhereAndWhyItFailed) {
    std::filesystem::create_directories(file_);
    try {
        entry().enable();
        FAIL();
    } catch (const LoginItemError& error) {
        EXPECT_EQ(error.which(), LoginItemError::Case::cannotWrite);
        EXPECT_EQ(error.what(), "cannotWrite(\"" + file_.string() + ": Is a directory\")");
    }
}

TEST_F(AutostartEntryTest, UnregisteringRemovesTheEntry) {
    entry().enable();
    entry().disable();
    EXPECT_FALSE(std::filesystem::exists(file_));
    EXPECT_EQ(entry().status(), Status::disabled);
}

TEST_F(AutostartEntryTest, UnregisteringRemovesAnEntryThatIsTurnedOff) {
    ASSERT_EQ(statusOf(exec() + "Hidden=true\n"), Status::disabled);
    entry().disable();
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(AutostartEntryTest, UnregisteringRemovesALinkAndLeavesItsTarget) {
    std::filesystem::create_directories(autostart_);
    std::filesystem::create_symlink(program_, file_);
    entry().disable();
    EXPECT_FALSE(std::filesystem::is_symlink(file_));
    EXPECT_TRUE(std::filesystem::exists(program_));
}

TEST_F(AutostartEntryTest, UnregisteringNothingIsFine) {
    EXPECT_NO_THROW(entry().disable());
    folder_.write("configuration", "a file in place of the folder");
    EXPECT_NO_THROW(entry().disable());
}

TEST_F(AutostartEntryTest, UnregisteringSaysWhereItFailed) {
    std::filesystem::create_directories(file_);
    try {
        entry().disable();
        FAIL();
    } catch (const LoginItemError& error) {
        EXPECT_EQ(error.which(), LoginItemError::Case::cannotRemove);
        EXPECT_EQ(std::string(error.what()).find("cannotRemove(\"" + file_.string() + ": "), 0U)
            << error.what();
    }
}

TEST_F(AutostartEntryTest, IsTurnedOffByTheKeysOfTheDesktopsTools) {
    EXPECT_EQ(statusOf(exec()), Status::enabled);
    EXPECT_EQ(statusOf(exec() + "Hidden=true\n"), Status::disabled);
    EXPECT_EQ(statusOf(exec() + " Hidden = 1 \r\n"), Status::disabled);
    EXPECT_EQ(statusOf(exec() + "Hidden=false\n"), Status::enabled);
    EXPECT_EQ(statusOf(exec() + "X-GNOME-Autostart-enabled=false\n"), Status::disabled);
    EXPECT_EQ(statusOf(exec() + "X-GNOME-Autostart-enabled=true\n"), Status::enabled);
    EXPECT_EQ(statusOf(exec() + "[Other]\nHidden=true\n"), Status::enabled);
    EXPECT_EQ(statusOf("Hidden=true\n"), Status::disabled);
}

TEST_F(AutostartEntryTest, IsNotFoundWithoutItsProgram) {
    EXPECT_EQ(statusOf("Exec=/nowhere/tarnly\n"), Status::broken);
    EXPECT_EQ(statusOf("TryExec=/nowhere/tarnly\n" + exec()), Status::broken);
    EXPECT_EQ(statusOf("Exec=" + folder_.path().string() + "\n"), Status::broken);
    EXPECT_EQ(statusOf("Name=Tarnly\n"), Status::broken);
    std::filesystem::permissions(program_, std::filesystem::perms::owner_read);
    EXPECT_EQ(statusOf(exec()), Status::broken);
}

TEST_F(AutostartEntryTest, TryExecDecidesWhereItIsThere) {
    EXPECT_EQ(statusOf("TryExec=" + program_.string() + "\nExec=env A=b tarnly\n"), Status::enabled);
    EXPECT_EQ(statusOf("TryExec=\n" + exec()), Status::enabled);
}

TEST_F(AutostartEntryTest, LooksForRelativeNamesInTheSearchPath) {
    const std::string before = std::getenv("PATH");
    setenv("PATH", (":/nowhere:" + folder_.path().string()).c_str(), 1);
    EXPECT_EQ(statusOf("Exec=program --hidden\n"), Status::enabled);
    EXPECT_EQ(statusOf("Exec=other\n"), Status::broken);
    EXPECT_EQ(statusOf("Exec=./program\n"), Status::broken);
    setenv("PATH", before.c_str(), 1);
}

TEST_F(AutostartEntryTest, IsNotRegisteredWhereTheFileIsNoEntry) {
    EXPECT_EQ(statusOfText(""), Status::disabled);
    EXPECT_EQ(statusOfText(exec()), Status::disabled);
    EXPECT_EQ(statusOfText(std::string("\0\xFF[=]\n\n", 7)), Status::disabled);
}

TEST_F(AutostartEntryTest, ReadsNoMoreThanAnEntryMayHave) {
    const auto entryOf = [&](std::size_t size) {
        const auto text = "[Desktop Entry]\n" + exec() + "#";
        return text + std::string(size - text.size(), 'x');
    };
    EXPECT_EQ(statusOfText(entryOf(64 * 1024)), Status::enabled);
    EXPECT_EQ(statusOfText(entryOf(64 * 1024 + 1)), Status::disabled);
}

TEST_F(AutostartEntryTest, IsNotRegisteredWhereThereIsNoFileButAFolderOrAPipe) {
    std::filesystem::create_directories(file_);
    EXPECT_EQ(entry().status(), Status::disabled);
    std::filesystem::remove(file_);
    ASSERT_EQ(mkfifo(file_.c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(entry().status(), Status::disabled);
    entry().enable();
    EXPECT_EQ(entry().status(), Status::enabled);
}

TEST_F(AutostartEntryTest, FollowsALinkToAnEntry) {
    std::filesystem::create_directories(autostart_);
    std::filesystem::create_symlink(folder_.write("target", "[Desktop Entry]\n" + exec()), file_);
    EXPECT_EQ(entry().status(), Status::enabled);
    std::filesystem::remove(folder_.path() / "target");
    EXPECT_EQ(entry().status(), Status::disabled);
}

} // namespace
} // namespace tarnly
