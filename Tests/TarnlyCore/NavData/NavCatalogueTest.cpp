#include "TarnlyCore/NavData/NavCatalogue.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/NavData/NavAbout.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NavCatalogueTest : public testing::Test {
  protected:
    std::string made(const std::string& statements) const {
        sqlite3* connection = nullptr;
        EXPECT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(connection, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(connection);
        return file;
    }

    const test::TemporaryFolder folder;
    const std::string file = (folder.path() / "nav.db").string();
};

TEST_F(NavCatalogueTest, ReadsDatabasesThatHaveOnlyWhatScriptsNeed) {
    const NavCatalogue catalogue(
        made("CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL);"
             "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);"
             "INSERT INTO navaids VALUES ('KLO', 3, 4);"
             "INSERT INTO enroute_fixes VALUES ('KLO', 1, 2)"));
    EXPECT_THAT(catalogue.find("klo"), ElementsAre(NavListing{"KLO", "fix", {}, {}, {}, {1, 2}},
                                                   NavListing{"KLO", "navaid", {}, {}, {}, {3, 4}}));
    EXPECT_THAT(catalogue.find("' OR 1"), IsEmpty());
    EXPECT_EQ(readNavAbout(file), std::nullopt);
}

TEST_F(NavCatalogueTest, OneTableIsEnough) {
    const NavCatalogue catalogue(made("CREATE VIEW navaids AS SELECT 'KLO' AS nav_id, 1 AS lat, 2 AS lon"));
    EXPECT_EQ(catalogue.find("KLO").size(), 1U);
    EXPECT_THAT(catalogue.near("KL", 8), ElementsAre("KLO"));
}

TEST_F(NavCatalogueTest, NamesThatDifferInOneLetterAreNear) {
    const NavCatalogue catalogue(
        made("CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL);"
             "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);"
             "INSERT INTO enroute_fixes (fix_id) VALUES ('RIDGE'), ('RIDGE'), ('BRIDGE'), "
             "('RDGE'), ('RIDGY'), ('RDIGE'), ('RIDEG'), ('RIGDY'), ('FRIDGES'), ('');"
             "INSERT INTO navaids (nav_id) VALUES ('RIDG'), ('XYZ')"));
    EXPECT_THAT(catalogue.near("ridge", 20),
                ElementsAre("BRIDGE", "RDGE", "RDIGE", "RIDEG", "RIDG", "RIDGY"));
    EXPECT_THAT(catalogue.near("ridge", 2), ElementsAre("BRIDGE", "RDGE"));
    EXPECT_THAT(catalogue.near("NOWHERE", 20), IsEmpty());
}

TEST_F(NavCatalogueTest, WhatIsNoDatabaseSaysNothingOfItself) {
    EXPECT_EQ(readNavAbout(folder.write("text", "text").string()), std::nullopt);
    EXPECT_EQ(readNavAbout("/nowhere/nav.db"), std::nullopt);
    EXPECT_THROW(NavCatalogue("/nowhere/nav.db"), SqliteError);
}

} // namespace
} // namespace tarnly
