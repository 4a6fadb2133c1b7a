#include "TarnlyXPlane/Situations.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;
using testing::UnorderedElementsAre;

std::vector<std::string> namesIn(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& flight : listSituations(directory).flights)
        names.push_back(flight.name);
    return names;
}

TEST(SituationFiles, OnlyTheExactExtensionIsListed) {
    const TemporaryFolder folder;
    for (const auto* name : {"a.sit", "b.txt", "c.SIT", "d.sit.bak", "sit", ".sit", "e.sitx"})
        folder.write(name, "");
    EXPECT_THAT(namesIn(folder.path().string()), UnorderedElementsAre("a"));
}

TEST(SituationFiles, HiddenFilesFoldersAndLinksAreListedToo) {
    const TemporaryFolder folder;
    folder.write(".hidden.sit", "");
    fs::create_directory(folder.path() / "archive.sit");
    fs::create_symlink("nowhere", folder.path() / "link.sit");
    folder.write("two.dots.sit", "");
    EXPECT_THAT(namesIn(folder.path().string()),
                UnorderedElementsAre(".hidden", "archive", "link", "two.dots"));
}

TEST(SituationFiles, IsNotRecursive) {
    const TemporaryFolder folder;
    fs::create_directory(folder.path() / "inner");
    folder.write("inner/a.sit", "");
    EXPECT_THAT(namesIn(folder.path().string()), UnorderedElementsAre());
}

TEST(SituationFiles, ListingHasAbsolutePathAndModificationDate) {
    const TemporaryFolder folder;
    const auto path = folder.write("Pattern 1.sit", "").string();
    const timespec times[2] = {{0, 0}, {1'700'000'000, 250'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const auto flights = listSituations(folder.path().string() + "/").flights;
    ASSERT_EQ(flights.size(), 1U);
    EXPECT_EQ(flights[0].name, "Pattern 1");
    EXPECT_EQ(flights[0].path, path);
    EXPECT_EQ(flights[0].modifiedAt.time.time_since_epoch(), std::chrono::milliseconds(1'700'000'000'250));
}

TEST(SituationFiles, NamesThatAreNotUtf8AreLeftOut) {
    const TemporaryFolder folder;
    folder.write("a\xFF.sit", "");
    folder.write("b\xFF.txt", "");
    folder.write("c\xC3\xA9.sit", "");
    EXPECT_THAT(namesIn(folder.path().string()), UnorderedElementsAre("c\u00E9"));
    EXPECT_EQ(listSituations(folder.path().string()).leftOut, 1U);
}

TEST(SituationFiles, FilesInAFolderWhoseNameIsNotUtf8AreLeftOut) {
    const TemporaryFolder folder;
    const auto inner = folder.path() / "a\xFF";
    fs::create_directory(inner);
    std::ofstream(inner / "a.sit").flush();
    EXPECT_THAT(namesIn(inner.string()), UnorderedElementsAre());
    EXPECT_EQ(listSituations(inner.string()).leftOut, 1U);
}

TEST(SituationFiles, DatesMayBeFarOut) {
    const TemporaryFolder folder;
    const auto path = folder.write("a.sit", "").string();
    for (const time_t seconds :
         {std::numeric_limits<time_t>::max() / 2, time_t{12'000'000'000}, time_t{-2'000'000'000}}) {
        const timespec times[2] = {{0, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        struct stat kept {}; // a file system may have narrower limits
        ASSERT_EQ(stat(path.c_str(), &kept), 0);
        const auto flights = listSituations(folder.path().string()).flights;
        EXPECT_EQ(flights.at(0).modifiedAt.time.time_since_epoch().count(),
                  static_cast<double>(kept.st_mtim.tv_sec));
    }
}

TEST(SituationFiles, MissingFolderIsEmpty) {
    const TemporaryFolder folder;
    EXPECT_TRUE(listSituations((folder.path() / "missing").string()).flights.empty());
    EXPECT_TRUE(listSituations("").flights.empty());
}

TEST(SituationFiles, FolderThatCannotBeReadFails) {
    const TemporaryFolder folder;
    EXPECT_THROW(listSituations(folder.write("file", "").string()), fs::filesystem_error);
}

TEST(SituationFiles, Existence) {
    const TemporaryFolder folder;
    const auto path = folder.write("a.sit", "").string();
    EXPECT_TRUE(situationExists(path));
    EXPECT_TRUE(situationExists(folder.path().string()));
    EXPECT_FALSE(situationExists(path + "x"));
    EXPECT_FALSE(situationExists(""));
    EXPECT_FALSE(situationExists(path + std::string("\0x", 2)));
    EXPECT_FALSE(situationExists("/" + std::string(100'000, 'a')));
}

TEST(SituationFiles, OnlyTheFileNameCountsForTheSimulator) {
    EXPECT_EQ(relativeSituationPath("/x/y/Pattern 1.sit"), "Output/situations/Pattern 1.sit");
    EXPECT_EQ(relativeSituationPath("/x/y/other.txt"), "Output/situations/other.sit");
    EXPECT_EQ(relativeSituationPath("/x/two.dots.sit"), "Output/situations/two.dots.sit");
    EXPECT_EQ(relativeSituationPath("/x/archive.sit/"), "Output/situations/archive.sit");
    EXPECT_EQ(relativeSituationPath("plain"), "Output/situations/plain.sit");
}

} // namespace
} // namespace tarnly
