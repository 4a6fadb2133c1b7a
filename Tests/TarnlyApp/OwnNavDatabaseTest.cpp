#include "TarnlyApp/OwnNavDatabase.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/SimulatorFiles.hpp"
#include "TarnlyCore/NavData/NavCatalogue.hpp"
#include "TarnlyCore/NavSource/NavSources.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using test::navHeader;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class OwnNavDatabaseTest : public testing::Test {
  protected:
    NavDatabaseFile refresh() {
        return refreshOwnNavDatabase(
            note, file, [] { return true; }, [this] { ++made; });
    }

    bool has(const std::string& ident) const { return !NavCatalogue(file.string()).find(ident).empty(); }

    const test::SimulatorFiles files;
    const test::TemporaryFolder data;
    const fs::path note = data.write("note.txt", files.folder.path().string() + "/\n");
    const fs::path file = data.path() / "data" / "navigation.db";
    int made = 0;
};

TEST_F(OwnNavDatabaseTest, IsMadeOncePerIssueOfTheData) {
    const auto first = refresh();
    EXPECT_EQ(first.path, file);
    EXPECT_EQ(first.cycle, "2501");
    EXPECT_THAT(first.warnings, IsEmpty());
    EXPECT_TRUE(has("TARNA"));
    EXPECT_EQ(refresh().path, file);
    EXPECT_EQ(made, 1) << "nothing has changed";

    files.put("Resources/default data/earth_fix.dat",
              navHeader("1200", "2501", "20251002") + " 52.1  9.2  OTHER ENRT ED\n99\n");
    refresh();
    EXPECT_TRUE(has("OTHER")) << "another build of the same cycle";
    EXPECT_FALSE(has("TARNA"));
}

TEST_F(OwnNavDatabaseTest, AFileThatWasTouchedIsReadAnew) {
    refresh();
    const auto source = files.folder.path() / "Resources/default data/earth_nav.dat";
    fs::last_write_time(source, fs::last_write_time(source) - std::chrono::hours(1));
    refresh();
    EXPECT_EQ(made, 2);
}

TEST_F(OwnNavDatabaseTest, AFailureIsAWarningAndKeepsWhatWasMade) {
    refresh();
    files.put("Resources/default data/earth_fix.dat", navHeader("600"));
    const auto after = refresh();
    EXPECT_THAT(after.warnings, ElementsAre(HasSubstr("has the format 600")));
    EXPECT_EQ(after.path, file);
    EXPECT_EQ(after.cycle, "2501");
    EXPECT_TRUE(has("TARNA"));
}

TEST_F(OwnNavDatabaseTest, WithoutASimulatorThereIsNoneAndNoWarning) {
    data.write("note.txt", "/nowhere/\n");
    const auto none = refresh();
    EXPECT_EQ(none.path, std::nullopt);
    EXPECT_THAT(none.warnings, IsEmpty());
}

TEST_F(OwnNavDatabaseTest, ADatabaseThatCannotBeWrittenIsAWarning) {
    data.write("data", "a file in the folder's place");
    const auto none = refresh();
    EXPECT_EQ(none.path, std::nullopt);
    EXPECT_THAT(none.warnings, ElementsAre(HasSubstr("cannot be written")));
}

TEST_F(OwnNavDatabaseTest, EndsWhenItIsNotWanted) {
    EXPECT_THROW(refreshOwnNavDatabase(
                     note, file, [] { return false; }, [] {}),
                 NavSourceError);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(OwnNavDatabaseTest, WhatAPersonNamesMayTellItsCycle) {
    refresh();
    EXPECT_EQ(lookAtNavDatabase(file).cycle, "2501");
    EXPECT_EQ(lookAtNavDatabase(note).cycle, "");
}

} // namespace
} // namespace tarnly
