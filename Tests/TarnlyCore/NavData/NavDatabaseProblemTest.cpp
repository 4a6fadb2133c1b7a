#include "TarnlyCore/NavData/NavDatabaseProblem.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include <filesystem>
#include <optional>
#include <string>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using testing::Optional;
using testing::StartsWith;

class NavDatabaseProblem : public testing::Test {
  protected:
    const test::TemporaryFolder folder;

    std::string made(const std::string& sql) const {
        const auto file = (folder.path() / "nav.db").string();
        sqlite3* connection = nullptr;
        EXPECT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection);
        sqlite3_close(connection);
        return file;
    }
};

TEST_F(NavDatabaseProblem, ADatabaseWithOneOfTheTablesIsFine) {
    EXPECT_EQ(problemOfNavDatabase(made("CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL)")),
              std::nullopt);
    EXPECT_EQ(problemOfNavDatabase(made("CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL)")),
              std::nullopt);
}

TEST_F(NavDatabaseProblem, AViewIsATable) {
    EXPECT_EQ(problemOfNavDatabase(made("CREATE VIEW navaids AS SELECT 'A' AS nav_id, 1 AS lat, 2 AS lon")),
              std::nullopt);
}

TEST_F(NavDatabaseProblem, WhatIsNotThereOrAFolderIsNone) {
    const auto missing = (folder.path() / "missing.db").string();
    EXPECT_THAT(problemOfNavDatabase(missing),
                Optional(StartsWith(missing + " does not exist; name an SQLite file")));
    const auto path = folder.path().string();
    EXPECT_THAT(problemOfNavDatabase(path), Optional(StartsWith(path + " is a folder; name an SQLite file")));
    EXPECT_THAT(problemOfNavDatabase(""), Optional(StartsWith(" does not exist; ")));
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(NavDatabaseProblem, WhatTheSystemLacksIsNoProblemOfTheFile) {
    const auto file = made("CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL)");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const auto problem = problemOfNavDatabase(file);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(problem, std::nullopt);
}

TEST_F(NavDatabaseProblem, AnotherFileIsNone) {
    const auto file = folder.write("lesson.json", std::string(3000, 'x')).string();
    EXPECT_THAT(problemOfNavDatabase(file), Optional(StartsWith(file + " is no SQLite database; name ")));
}

TEST_F(NavDatabaseProblem, ADatabaseOfSomethingElseIsNone) {
    const std::string text = " has none of the tables of a navigation database; name ";
    const auto empty = folder.write("empty.db", "").string();
    EXPECT_THAT(problemOfNavDatabase(empty), Optional(StartsWith(empty + text)));
    const auto other = made("CREATE TABLE navaids (name TEXT); CREATE TABLE songs (title TEXT)");
    EXPECT_THAT(problemOfNavDatabase(other), Optional(StartsWith(other + text)));
}

TEST_F(NavDatabaseProblem, ADatabaseThatSomebodyWritesIsNotRefused) {
    const auto file = made("CREATE TABLE songs (title TEXT)");
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &writer), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(problemOfNavDatabase(file), std::nullopt);
    sqlite3_close(writer);
}

TEST_F(NavDatabaseProblem, ViewsUponViewsDoNotTakeForever) {
    // Each view doubles the work of the one before.
    std::string sql = "BEGIN; CREATE VIEW v0 AS SELECT 'A' AS fix_id, 1 AS lat, 2 AS lon;";
    for (int level = 1; level <= 40; ++level) {
        const auto below = "(SELECT * FROM v" + std::to_string(level - 1) + " LIMIT 9)";
        sql += "CREATE VIEW v" + std::to_string(level) + " AS SELECT a.fix_id, a.lat, b.lon FROM " + below +
               " a, " + below + " b;";
    }
    sql += "CREATE VIEW enroute_fixes AS SELECT * FROM v40; COMMIT;";
    const auto file = made(sql);
    EXPECT_EQ(problemOfNavDatabase(file), std::nullopt);
}

} // namespace
} // namespace tarnly
