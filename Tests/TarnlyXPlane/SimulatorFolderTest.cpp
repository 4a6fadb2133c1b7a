#include "TarnlyXPlane/SimulatorFolder.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SimulatorFolder, ANoteHasALineForEachPlace) {
    EXPECT_THAT(simulatorFoldersIn("/opt/X-Plane 12/\n/home/pilot/X-Plane 12\n"),
                ElementsAre("/opt/X-Plane 12", "/home/pilot/X-Plane 12"));
    EXPECT_THAT(simulatorFoldersIn("  /opt/x//\r\n\n\t\n/y"), ElementsAre("/opt/x", "/y"));
    EXPECT_THAT(simulatorFoldersIn("/"), ElementsAre("/"));
    EXPECT_THAT(simulatorFoldersIn("X-Plane 12/\nC:\\X-Plane 12\\\n"), IsEmpty());
    EXPECT_THAT(simulatorFoldersIn(""), IsEmpty());
}

class FindSimulatorFolderTest : public testing::Test {
  protected:
    std::filesystem::path made(const std::string& name) const {
        std::filesystem::create_directories(folder.path() / name);
        return folder.path() / name;
    }
    std::optional<std::filesystem::path> foundBy(const std::string& note) const {
        return findSimulatorFolder(folder.write("note.txt", note));
    }

    const test::TemporaryFolder folder;
};

TEST_F(FindSimulatorFolderTest, TheFirstPlaceThatExistsCounts) {
    const auto first = made("X-Plane 12");
    const auto second = made("X-Plane 12 beta");
    const auto note = first.string() + "/\n" + second.string() + "/\n";
    EXPECT_EQ(foundBy(note), first);
    const auto file = folder.write("file", "");
    EXPECT_EQ(foundBy(file.string() + "\n" + note), first) << "a file is no folder";
    std::filesystem::remove(first);
    EXPECT_EQ(foundBy(note), second);
    std::filesystem::remove(second);
    EXPECT_EQ(foundBy(note), std::nullopt);
}

TEST_F(FindSimulatorFolderTest, APlaceWithASimulatorGoesBeforeAnEmptyOne) {
    const auto stale = made("old");
    const auto present = made("X-Plane 12");
    folder.write("nav", "I\n");
    std::filesystem::create_directories(present / "Resources/default data");
    std::filesystem::rename(folder.path() / "nav", present / "Resources/default data/earth_nav.dat");
    EXPECT_EQ(foundBy(stale.string() + "/\n" + present.string() + "/\n"), present);
}

TEST_F(FindSimulatorFolderTest, WithoutANoteThereIsNone) {
    EXPECT_EQ(findSimulatorFolder(folder.path() / "missing.txt"), std::nullopt);
    EXPECT_EQ(findSimulatorFolder(folder.path()), std::nullopt) << "a folder in its place";
    EXPECT_EQ(foundBy(""), std::nullopt);
    EXPECT_EQ(foundBy(std::string(1'000'000, 'x')), std::nullopt);
}

TEST_F(FindSimulatorFolderTest, TheNoteStandsInTheHomeFolder) {
    const std::string before = ::getenv("HOME") == nullptr ? "" : ::getenv("HOME");
    ::setenv("HOME", folder.path().c_str(), 1);
    EXPECT_EQ(simulatorInstallerNote(), folder.path() / ".x-plane/x-plane_install_12.txt");
    ::setenv("HOME", before.c_str(), 1);
}

TEST(SimulatorFolder, SituationsStandInItsOutput) {
    EXPECT_EQ(situationsFolderOf("/opt/X-Plane 12"), "/opt/X-Plane 12/Output/situations");
}

} // namespace
} // namespace tarnly
