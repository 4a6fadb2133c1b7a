#include "TarnlyCore/NavSource/NavSources.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/SimulatorFiles.hpp"

namespace tarnly {
namespace {

using test::navHeader;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string fixRow = "1 2 A ENRT ED\n99\n";
const std::string navRow = "2 1 2 0 300 50 0 AB ENRT ED AB NDB\n99\n";

class NavSourcesTest : public testing::Test {
  protected:
    NavSources found() const { return findNavSources(files.folder.path()); }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& file : found().files)
            all.push_back(file.stamp.name);
        return all;
    }

    std::string refusal() const {
        try {
            found();
        } catch (const NavSourceError& error) {
            return error.payload();
        }
        return "";
    }

    void provide(const std::string& cycle = "2502") const {
        files.put("Custom Data/earth_fix.dat", navHeader("1101", cycle) + fixRow);
        files.put("Custom Data/earth_nav.dat", navHeader("1150", cycle) + navRow);
    }

    const test::SimulatorFiles files;
};

TEST_F(NavSourcesTest, TheShippedFilesAreTheBase) {
    const auto sources = found();
    EXPECT_THAT(names(),
                ElementsAre("Resources/default data/earth_fix.dat", "Resources/default data/earth_nav.dat"));
    EXPECT_EQ(sources.cycle, "2501");
    EXPECT_EQ(sources.build, "20250115");
    EXPECT_THAT(sources.warnings, IsEmpty());
    EXPECT_EQ(sources.files[0].stamp.version, 1200);
    EXPECT_EQ(sources.files[0].stamp.size,
              static_cast<std::int64_t>(std::filesystem::file_size(sources.files[0].path)));
    EXPECT_GT(sources.files[0].stamp.changed, 1'500'000'000'000'000) << "microseconds";
    EXPECT_TRUE(hasNavData(files.folder.path()));
}

TEST_F(NavSourcesTest, AProvidersFilesReplaceThemTogether) {
    provide();
    EXPECT_THAT(names(), ElementsAre("Custom Data/earth_fix.dat", "Custom Data/earth_nav.dat"));
    EXPECT_EQ(found().cycle, "2502");
    files.put("Custom Data/earth_nav.dat", "");
    EXPECT_THAT(names(),
                ElementsAre("Resources/default data/earth_fix.dat", "Resources/default data/earth_nav.dat"))
        << "a file without a byte counts as none, and the two belong together";
    EXPECT_THAT(found().warnings, ElementsAre(HasSubstr("has earth_fix.dat without earth_nav.dat")));
    EXPECT_EQ(found().cycle, "2501");
}

TEST_F(NavSourcesTest, AirportsComeFromTheSamePlaceOrTheShippedOnes) {
    files.put("Resources/default data/earth_aptmeta.dat", navHeader("1210"));
    files.put("Custom Data/earth_aptmeta.dat", navHeader("1100"));
    EXPECT_EQ(names().back(), "Resources/default data/earth_aptmeta.dat");
    provide();
    EXPECT_EQ(names().back(), "Custom Data/earth_aptmeta.dat");
    files.put("Custom Data/earth_aptmeta.dat", "");
    EXPECT_EQ(names().back(), "Resources/default data/earth_aptmeta.dat");
    EXPECT_THAT(found().warnings, IsEmpty());
}

TEST_F(NavSourcesTest, ThePersonsOwnComeLastOverWhatWasPlacedByHand) {
    files.put("Custom Data/user_nav.dat", navHeader("1150") + navRow);
    files.put("Custom Data/user_fix.dat", navHeader("1101") + fixRow);
    files.put("Custom Scenery/Global Airports/Earth nav data/earth_nav.dat", navHeader("1150"));
    EXPECT_EQ(names()[2], "Custom Scenery/Global Airports/Earth nav data/earth_nav.dat");
    files.put("Global Scenery/Global Airports/Earth nav data/earth_nav.dat", navHeader("1200"));
    EXPECT_THAT(names(),
                ElementsAre("Resources/default data/earth_fix.dat", "Resources/default data/earth_nav.dat",
                            "Global Scenery/Global Airports/Earth nav data/earth_nav.dat",
                            "Custom Data/user_fix.dat", "Custom Data/user_nav.dat"));
    EXPECT_EQ(found().files[4].layer, NavSource::Layer::users);
}

TEST_F(NavSourcesTest, OldFormatsAreRefusedAndNewOnesWarnedOf) {
    files.put("Resources/default data/earth_fix.dat", navHeader("1050") + fixRow);
    EXPECT_THAT(refusal(), AllOf(HasSubstr("earth_fix.dat has the format 1050"), HasSubstr("1100")));
    files.put("Resources/default data/earth_fix.dat", navHeader("1300") + fixRow);
    EXPECT_THAT(found().warnings,
                ElementsAre(HasSubstr("earth_fix.dat has the format 1300, newer than 1200")));
    files.put("Resources/default data/earth_fix.dat", "nothing of the kind\n");
    EXPECT_THAT(refusal(), HasSubstr("does not say in its second line"));
}

TEST_F(NavSourcesTest, AnOldFileOfThePersonIsLeftOut) {
    files.put("Custom Data/user_fix.dat", navHeader("600") + fixRow);
    EXPECT_EQ(names().size(), 2U);
    EXPECT_THAT(found().warnings, ElementsAre(AllOf(HasSubstr("user_fix.dat has the format 600"),
                                                    HasSubstr("it is left out"))));
}

TEST_F(NavSourcesTest, AFileInPlaceOfAllTextFilesIsTold) {
    files.put("Custom Data/earth_424.dat", "");
    EXPECT_THAT(found().warnings, IsEmpty());
    files.put("Custom Data/earth_424.dat", "HDR");
    EXPECT_THAT(found().warnings,
                ElementsAre(AllOf(HasSubstr("earth_424.dat"), HasSubstr("cannot be read"))));
    EXPECT_EQ(names().size(), 2U);
}

TEST_F(NavSourcesTest, CyclesThatDifferAreTold) {
    provide();
    files.put("Custom Data/earth_nav.dat", navHeader("1150", "2412") + navRow);
    EXPECT_THAT(found().warnings, ElementsAre(HasSubstr("different cycles, 2502 and 2412")));
}

TEST_F(NavSourcesTest, ACycleThatNoHeaderTellsMayStandBesideTheFiles) {
    files.put("Custom Data/earth_fix.dat", "I\n1101 Version\n" + fixRow);
    files.put("Custom Data/earth_nav.dat", "I\n1150 Version\n" + navRow);
    EXPECT_EQ(found().cycle, "");
    files.put("Custom Data/cycle.json", R"({"cycle":"2503","revision":"1"})");
    EXPECT_EQ(found().cycle, "2503");
    files.put("Custom Data/cycle_info.txt", "AIRAC cycle    : 2504\r\nRevision : 1\r\n");
    EXPECT_EQ(found().cycle, "2504");
    files.put("Custom Data/earth_fix.dat", "");
    EXPECT_EQ(found().cycle, "2501") << "the notes speak for a provider's files only";
}

TEST_F(NavSourcesTest, AFolderWithoutThemIsNoSimulators) {
    std::filesystem::remove(files.folder.path() / "Resources/default data/earth_nav.dat");
    EXPECT_THAT(refusal(), HasSubstr("earth_nav.dat is missing"));
    EXPECT_FALSE(hasNavData(files.folder.path()));
    EXPECT_FALSE(hasNavData("/nowhere"));
}

} // namespace
} // namespace tarnly
