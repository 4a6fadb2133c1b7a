#include "TarnlyCore/NavSource/NavBuild.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/SimulatorFiles.hpp"
#include "TarnlyCore/NavData/NavCatalogue.hpp"
#include "TarnlyCore/NavData/NavDatabase.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;
using test::navHeader;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class NavBuildTest : public testing::Test {
  protected:
    NavBuildReport build() const {
        return build([] { return true; });
    }
    NavBuildReport build(const std::function<bool()>& isWanted) const {
        return buildNavDatabase(findNavSources(files.folder.path()), target, {}, isWanted);
    }

    std::vector<std::string> kinds(const std::string& ident) const {
        std::vector<std::string> all;
        for (const auto& listing : NavCatalogue(target.string()).find(ident))
            all.push_back(listing.kind + " " + listing.area);
        return all;
    }

    /// As a script gets it.
    std::optional<Coordinate> looked(const std::string& ident) const {
        const NavDatabase database(target.string());
        const SystemClock clock;
        return NavDatabase::Lookup(database, clock, [] { return true; }).resolve(ident);
    }

    std::size_t filesBesideTheTarget() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(target.parent_path()), {}));
    }

    const test::SimulatorFiles files;
    const test::TemporaryFolder output;
    const fs::path target = output.path() / "nav.db";
};

TEST_F(NavBuildTest, ScriptsFindWhatTheSimulatorHas) {
    files.put("Resources/default data/earth_aptmeta.dat",
              navHeader("1210") + "ZZTA ED  52.401  9.415   190 C  7900 I  5000    -1\n99\n");
    const auto report = build();
    EXPECT_EQ(report.fixes, 2U);
    EXPECT_EQ(report.navaids, 2U);
    EXPECT_EQ(report.airports, 1U);
    EXPECT_THAT(report.remarks, IsEmpty());
    EXPECT_EQ(looked("tarna"), (Coordinate{52.1, 9.2}));
    EXPECT_EQ(looked("TRN"), (Coordinate{52.2, 9.3}));
    EXPECT_EQ(looked("ZZTA"), (Coordinate{52.401, 9.415}));
    EXPECT_EQ(looked("TAN"), (Coordinate{52.3, 9.1})) << "the beacon, not the fix of an approach";
    EXPECT_EQ(looked("NOWHERE"), std::nullopt);
}

TEST_F(NavBuildTest, AllOfANameAreKeptInTheOrderInWhichTheyCount) {
    files.put("Custom Data/user_fix.dat",
              navHeader("1101") + "1 2 TAN ENRT ZZ\n3 4 TARNA ENRT ED\n5 6 TAN ZZTA ED\n99\n");
    build();
    EXPECT_THAT(kinds("tan"), ElementsAre("fix ENRT", "NDB ENRT", "fix ZZTA"));
    EXPECT_EQ(looked("TAN"), (Coordinate{1, 2}));
    EXPECT_EQ(looked("TARNA"), (Coordinate{3, 4})) << "overridden";
    const auto all = NavCatalogue(target.string()).find("TAN");
    EXPECT_EQ(all[1], (NavListing{"TAN", "NDB", "TANDORF NDB", "ENRT", "ED", {52.3, 9.1}}));
    EXPECT_EQ(all[2].place, (Coordinate{5, 6})) << "overridden";
}

TEST_F(NavBuildTest, TheDatabaseSaysOfWhatItIsMade) {
    EXPECT_EQ(readNavAbout(target.string()), std::nullopt);
    build();
    const auto about = readNavAbout(target.string());
    EXPECT_EQ(about, findNavSources(files.folder.path()).about());
    files.put("Resources/default data/earth_fix.dat",
              navHeader("1200", "2501", "20251002") + "1 2 B ENRT ED\n");
    EXPECT_NE(about, findNavSources(files.folder.path()).about());
}

TEST_F(NavBuildTest, RowsThatCannotBeReadAreToldFileByFile) {
    files.put("Resources/default data/earth_fix.dat", navHeader("1200") + "1 2 A ENRT ED\nx\n1 2\n99\n");
    EXPECT_THAT(build().remarks,
                ElementsAre(HasSubstr("earth_fix.dat: 2 rows could not be read and left out, the "
                                      "first in line 5.")));
    EXPECT_EQ(looked("A"), (Coordinate{1, 2}));
    files.put("Resources/default data/earth_fix.dat", navHeader("1200") + "x\n");
    EXPECT_THROW(build(), NavSourceError) << "nothing but rubbish";
}

TEST_F(NavBuildTest, AFailureLeavesWhatWasThere) {
    build();
    const auto before = test::contentOf(target);
    files.put("Resources/default data/earth_fix.dat", navHeader("1200") + "x\n");
    EXPECT_THROW(build(), NavSourceError);
    EXPECT_EQ(test::contentOf(target), before);
    EXPECT_EQ(filesBesideTheTarget(), 1U);
}

TEST_F(NavBuildTest, EndsWhenItIsNotWanted) {
    std::string rows = navHeader("1200");
    for (int i = 0; i < 20'000; ++i)
        rows += "1 2 A" + std::to_string(i) + " ENRT ED\n";
    files.put("Resources/default data/earth_fix.dat", rows);
    for (const int last : {0, 2, 10}) {
        int asked = 0;
        EXPECT_THROW(build([&] { return asked++ < last; }), NavSourceError) << last;
        EXPECT_EQ(asked, last + 1) << "and at once";
        EXPECT_EQ(filesBesideTheTarget(), 0U);
    }
}

TEST_F(NavBuildTest, ShowsHowFarItIs) {
    std::vector<int> percents;
    buildNavDatabase(
        findNavSources(files.folder.path()), target, [&](int percent) { percents.push_back(percent); },
        [] { return true; });
    EXPECT_TRUE(std::ranges::is_sorted(percents));
    EXPECT_EQ(percents.back(), 100);
}

TEST_F(NavBuildTest, EverybodyMayReadIt) {
    build();
    const auto all = fs::perms::group_read | fs::perms::others_read;
    EXPECT_EQ(fs::status(target).permissions() & all, all);
    EXPECT_THROW(
        buildNavDatabase(findNavSources(files.folder.path()), "/nowhere/nav.db", {}, [] { return true; }),
        std::system_error);
}

} // namespace
} // namespace tarnly
