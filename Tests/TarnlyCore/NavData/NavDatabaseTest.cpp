#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/Recordings.hpp"

namespace tarnly {
namespace {

namespace fs = std::filesystem;

constexpr const char* tables =
    "CREATE TABLE enroute_fixes (fix_id TEXT, lat REAL, lon REAL);"
    "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);";

void makeDatabase(const fs::path& file, const std::string& sql) {
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
}

std::string openingError(const std::string& path) {
    try {
        const NavDatabase database(path);
    } catch (const NavDatabaseError& error) {
        return error.what();
    }
    return "opened";
}

class NavDatabaseTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const fs::path file = folder.path() / "nav.db";

    NavDatabase with(const std::string& rows) {
        makeDatabase(file, tables + rows);
        return NavDatabase(file.string());
    }
};

/// Works in another folder for as long as it lives.
class WorkingFolder {
  public:
    explicit WorkingFolder(const fs::path& folder) { fs::current_path(folder); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;
    ~WorkingFolder() { fs::current_path(before_); }

  private:
    const fs::path before_ = fs::current_path();
};

TEST_F(NavDatabaseTest, FindsFixesAndNavaids) {
    const auto database = with(
        "INSERT INTO enroute_fixes VALUES ('OSTIR', 47.25, 8.5);"
        "INSERT INTO navaids VALUES ('KLO', 47.457, -8.546);");
    EXPECT_EQ(database.resolve("OSTIR"), (Coordinate{47.25, 8.5}));
    EXPECT_EQ(database.resolve("KLO"), (Coordinate{47.457, -8.546}));
    EXPECT_EQ(database.resolve("NONE"), std::nullopt);
    EXPECT_EQ(database.resolve(""), std::nullopt);
}

TEST_F(NavDatabaseTest, FixWinsOverANavaidOfTheSameName) {
    const auto database = with(
        "INSERT INTO navaids VALUES ('KLO', 1, 2);"
        "INSERT INTO enroute_fixes VALUES ('KLO', 3, 4);");
    EXPECT_EQ(database.resolve("KLO"), (Coordinate{3, 4}));
}

TEST_F(NavDatabaseTest, FirstOfSeveralRowsCounts) {
    const auto database = with("INSERT INTO enroute_fixes VALUES ('ABC', 1, 2), ('ABC', 3, 4);");
    EXPECT_EQ(database.resolve("ABC"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, UpperCasesTheIdButNotTheRows) {
    const auto database = with(
        "INSERT INTO enroute_fixes VALUES ('KSFO', 37.6, -122.4), ('GRÜSSE', 1, 2), ('lower', 3, 4);"
        "INSERT INTO navaids VALUES ('ksfo', 0, 0), ('SFO', 37.5, -122.3);");
    EXPECT_EQ(database.resolve("ksfo"), (Coordinate{37.6, -122.4}));
    EXPECT_EQ(database.resolve("sFo"), (Coordinate{37.5, -122.3}));
    EXPECT_EQ(database.resolve("grüße"), (Coordinate{1, 2}));
    EXPECT_EQ(database.resolve("lower"), std::nullopt);
    EXPECT_EQ(database.resolve(" KSFO"), std::nullopt);
}

TEST_F(NavDatabaseTest, IdIsNotSql) {
    const auto database = with("INSERT INTO enroute_fixes VALUES ('A''B', 1, 2);");
    EXPECT_EQ(database.resolve("a'b"), (Coordinate{1, 2}));
    EXPECT_EQ(database.resolve("' OR 1 --"), std::nullopt);
}

TEST_F(NavDatabaseTest, IdEndsAtItsFirstNul) {
    const auto database = with("INSERT INTO enroute_fixes VALUES ('ABC', 1, 2);");
    EXPECT_EQ(database.resolve(std::string("abc\0def", 7)), (Coordinate{1, 2}));
    EXPECT_EQ(database.resolve(std::string("\0abc", 4)), std::nullopt);
}

TEST_F(NavDatabaseTest, DatabaseWithoutOneOfTheTablesHasTheOther) {
    makeDatabase(file,
                 "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);"
                 "INSERT INTO navaids VALUES ('KLO', 1, 2);");
    EXPECT_EQ(NavDatabase(file.string()).resolve("klo"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, NothingIsFoundWithoutTablesOrInAFileThatIsNoDatabase) {
    makeDatabase(file, "CREATE TABLE other (x)");
    EXPECT_EQ(NavDatabase(file.string()).resolve("KLO"), std::nullopt);
    const auto letter = folder.write("letter.txt", std::string(5000, 'x'));
    EXPECT_EQ(NavDatabase(letter.string()).resolve("KLO"), std::nullopt);
    const auto empty = folder.write("empty.db", "");
    EXPECT_EQ(NavDatabase(empty.string()).resolve("KLO"), std::nullopt);
    EXPECT_EQ(fs::file_size(empty), 0U);
}

TEST_F(NavDatabaseTest, PathThatDoesNotExistIsNotCreated) {
    EXPECT_EQ(openingError(file.string()),
              "openFailed(path: \"" + file.string() + "\", message: \"unable to open database file\")");
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(NavDatabaseTest, FolderIsNoDatabase) {
    const auto path = folder.path().string();
    EXPECT_THAT(openingError(path), testing::StartsWith("openFailed(path: \"" + path + "\", message: \""));
}

TEST_F(NavDatabaseTest, RelativePathsAreTakenFromTheWorkingFolder) {
    makeDatabase(file, tables + std::string("INSERT INTO navaids VALUES ('KLO', 1, 2);"));
    const WorkingFolder here(folder.path());
    EXPECT_EQ(NavDatabase("nav.db").resolve("KLO"), (Coordinate{1, 2}));
    EXPECT_EQ(openingError("./none.db"),
              R"(openFailed(path: "./none.db", message: "unable to open database file"))");
}

TEST_F(NavDatabaseTest, LeavesTheFileAsItWas) {
    makeDatabase(file, tables + std::string("INSERT INTO navaids VALUES ('KLO', 1, 2);"));
    const auto before = test::contentOf(file);
    {
        const NavDatabase database(file.string());
        EXPECT_TRUE(database.resolve("KLO"));
        EXPECT_FALSE(database.resolve("'; DROP TABLE navaids; --"));
    }
    EXPECT_EQ(test::contentOf(file), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST_F(NavDatabaseTest, FindsNothingWhileSomebodyWritesAndFindsItAfterwards) {
    const auto database = with("INSERT INTO navaids VALUES ('KLO', 1, 2);");
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &writer), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(database.resolve("KLO"), std::nullopt);
    sqlite3_close(writer);
    EXPECT_EQ(database.resolve("KLO"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, ServesMoreThreadsThanItHasConnections) {
    const auto database = with(
        "INSERT INTO enroute_fixes VALUES ('ABC', 1, 2);"
        "INSERT INTO navaids VALUES ('KLO', 3, 4);");
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < NavDatabase::sideBySide + 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                EXPECT_EQ(database.resolve("abc"), (Coordinate{1, 2}));
                EXPECT_EQ(database.resolve("klo"), (Coordinate{3, 4}));
                EXPECT_EQ(database.resolve("none"), std::nullopt);
            }
        });
    }
}

} // namespace
} // namespace tarnly
