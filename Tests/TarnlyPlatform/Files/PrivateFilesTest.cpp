#include "TarnlyPlatform/Files/PrivateFiles.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using std::filesystem::perms;

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t entriesIn(const std::filesystem::path& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

perms permissionsOf(const std::filesystem::path& path) { return std::filesystem::status(path).permissions(); }

TEST(FileReplacement, MakesFilesAndFoldersForThePersonOnly) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "a" / "b" / "file";
    replaceFile(file, "content");
    EXPECT_EQ(contentOf(file), "content");
    EXPECT_EQ(permissionsOf(file), perms::owner_read | perms::owner_write);
    EXPECT_EQ(permissionsOf(folder.path() / "a"), perms::owner_all);
    EXPECT_EQ(permissionsOf(folder.path() / "a" / "b"), perms::owner_all);
}

TEST(FileReplacement, ReplacesTheWholeFileAndLeavesNothingBeside) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("file", "something longer");
    replaceFile(file, "short");
    EXPECT_EQ(contentOf(file), "short");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(FileReplacement, ReadersOfTheFormerFileKeepIt) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("file", "former");
    std::filesystem::create_hard_link(file, folder.path() / "other name");
    replaceFile(file, "new");
    EXPECT_EQ(contentOf(folder.path() / "other name"), "former");
}

TEST(FileReplacement, ReplacesALinkRatherThanItsTarget) {
    const test::TemporaryFolder folder;
    const auto target = folder.write("target", "of the link");
    const auto link = folder.path() / "link";
    std::filesystem::create_symlink(target, link);
    replaceFile(link, "new");
    EXPECT_FALSE(std::filesystem::is_symlink(link));
    EXPECT_EQ(contentOf(link), "new");
    EXPECT_EQ(contentOf(target), "of the link");
}

TEST(FileReplacement, FailureLeavesWhatWasThere) {
    const test::TemporaryFolder folder;
    const auto occupied = folder.path() / "occupied";
    std::filesystem::create_directory(occupied);
    EXPECT_THROW(replaceFile(occupied, "content"), std::system_error);
    EXPECT_TRUE(std::filesystem::is_directory(occupied));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(FileReplacement, AFileInPlaceOfAFolderIsAnError) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("file", "content");
    EXPECT_THROW(replaceFile(file / "below", "content"), std::system_error);
    EXPECT_EQ(contentOf(file), "content");
}

} // namespace
} // namespace tarnly
