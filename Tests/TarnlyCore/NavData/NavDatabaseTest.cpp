#include "TarnlyCore/NavData/NavDatabase.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
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

/// A clock that goes on a little at each look: what takes its time needs no waiting.
class GoingOn final : public Clock {
  public:
    TimePoint now() const override { return now_ += std::chrono::milliseconds(50); }
    Task<> sleepFor(Duration) override { throw std::logic_error("nobody sleeps by this clock"); }

  private:
    mutable TimePoint now_;
};

bool always() { return true; }

/// However long it takes.
std::optional<Coordinate> find(const NavDatabase& database, const std::string& id) {
    const test::VirtualClock clock;
    return NavDatabase::Lookup(database, clock, always).resolve(id);
}

std::optional<Coordinate> findInTime(const NavDatabase& database, const std::string& id) {
    const GoingOn clock;
    return NavDatabase::Lookup(database, clock, always).resolve(id);
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
    EXPECT_EQ(find(database, "OSTIR"), (Coordinate{47.25, 8.5}));
    EXPECT_EQ(find(database, "KLO"), (Coordinate{47.457, -8.546}));
    EXPECT_EQ(find(database, "NONE"), std::nullopt);
    EXPECT_EQ(find(database, ""), std::nullopt);
}

TEST_F(NavDatabaseTest, FixWinsOverANavaidOfTheSameName) {
    const auto database = with(
        "INSERT INTO navaids VALUES ('KLO', 1, 2);"
        "INSERT INTO enroute_fixes VALUES ('KLO', 3, 4);");
    EXPECT_EQ(find(database, "KLO"), (Coordinate{3, 4}));
}

TEST_F(NavDatabaseTest, FirstOfSeveralRowsCounts) {
    const auto database = with("INSERT INTO enroute_fixes VALUES ('ABC', 1, 2), ('ABC', 3, 4);");
    EXPECT_EQ(find(database, "ABC"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, UpperCasesTheIdButNotTheRows) {
    const auto database = with(
        "INSERT INTO enroute_fixes VALUES ('KSFO', 37.6, -122.4), ('GRÜSSE', 1, 2), ('lower', 3, 4);"
        "INSERT INTO navaids VALUES ('ksfo', 0, 0), ('SFO', 37.5, -122.3);");
    EXPECT_EQ(find(database, "ksfo"), (Coordinate{37.6, -122.4}));
    EXPECT_EQ(find(database, "sFo"), (Coordinate{37.5, -122.3}));
    EXPECT_EQ(find(database, "grüße"), (Coordinate{1, 2}));
    EXPECT_EQ(find(database, "lower"), std::nullopt);
    EXPECT_EQ(find(database, " KSFO"), std::nullopt);
}

TEST_F(NavDatabaseTest, IdIsNotSql) {
    const auto database = with("INSERT INTO enroute_fixes VALUES ('A''B', 1, 2);");
    EXPECT_EQ(find(database, "a'b"), (Coordinate{1, 2}));
    EXPECT_EQ(find(database, "' OR 1 --"), std::nullopt);
}

TEST_F(NavDatabaseTest, IdEndsAtItsFirstNul) {
    const auto database = with("INSERT INTO enroute_fixes VALUES ('ABC', 1, 2);");
    EXPECT_EQ(find(database, std::string("abc\0def", 7)), (Coordinate{1, 2}));
    EXPECT_EQ(find(database, std::string("\0abc", 4)), std::nullopt);
}

TEST_F(NavDatabaseTest, DatabaseWithoutOneOfTheTablesHasTheOther) {
    makeDatabase(file,
                 "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);"
                 "INSERT INTO navaids VALUES ('KLO', 1, 2);");
    EXPECT_EQ(find(NavDatabase(file.string()), "klo"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, NothingIsFoundWithoutTablesOrInAFileThatIsNoDatabase) {
    makeDatabase(file, "CREATE TABLE other (x)");
    EXPECT_EQ(find(NavDatabase(file.string()), "KLO"), std::nullopt);
    const auto letter = folder.write("letter.txt", std::string(5000, 'x'));
    EXPECT_EQ(find(NavDatabase(letter.string()), "KLO"), std::nullopt);
    const auto empty = folder.write("empty.db", "");
    EXPECT_EQ(find(NavDatabase(empty.string()), "KLO"), std::nullopt);
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
    EXPECT_EQ(find(NavDatabase("nav.db"), "KLO"), (Coordinate{1, 2}));
    EXPECT_EQ(openingError("./none.db"),
              R"(openFailed(path: "./none.db", message: "unable to open database file"))");
}

TEST_F(NavDatabaseTest, LeavesTheFileAsItWas) {
    makeDatabase(file, tables + std::string("INSERT INTO navaids VALUES ('KLO', 1, 2);"));
    const auto before = test::contentOf(file);
    {
        const NavDatabase database(file.string());
        EXPECT_TRUE(find(database, "KLO"));
        EXPECT_FALSE(find(database, "'; DROP TABLE navaids; --"));
    }
    EXPECT_EQ(test::contentOf(file), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST_F(NavDatabaseTest, FindsNothingWhileSomebodyWritesAndFindsItAfterwards) {
    const auto database = with("INSERT INTO navaids VALUES ('KLO', 1, 2);");
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &writer), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(findInTime(database, "KLO"), std::nullopt);
    sqlite3_close(writer);
    EXPECT_EQ(find(database, "KLO"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, ServesMoreThreadsThanItHasConnections) {
    const auto database = with(
        "INSERT INTO enroute_fixes VALUES ('ABC', 1, 2);"
        "INSERT INTO navaids VALUES ('KLO', 3, 4);");
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < NavDatabase::sideBySide + 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                EXPECT_EQ(find(database, "abc"), (Coordinate{1, 2}));
                EXPECT_EQ(find(database, "klo"), (Coordinate{3, 4}));
                EXPECT_EQ(find(database, "none"), std::nullopt);
            }
        });
    }
}

// What stands in the file is others' doing

/// A table's name for rows without end.
constexpr const char* endless =
    "CREATE VIEW enroute_fixes AS WITH RECURSIVE row(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM row)"
    " SELECT 'NONE' || n AS fix_id, 1.0 AS lat, 2.0 AS lon FROM row;"
    "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);"
    "INSERT INTO navaids VALUES ('KLO', 1, 2);";

struct EndlessTest : NavDatabaseTest {
    std::string makeIt() const {
        makeDatabase(file, endless);
        return file.string();
    }

    std::vector<Phrase> warnings;
    const NavDatabase database{makeIt(), [this](const Phrase& text) { warnings.push_back(text); }};
};

TEST_F(EndlessTest, LookupEndsAtItsLimitAndSaysSoOnce) {
    const GoingOn clock;
    NavDatabase::Lookup lookup(database, clock, always);
    EXPECT_EQ(lookup.resolve("NOWHERE"), std::nullopt);
    const auto end = clock.now();
    EXPECT_EQ(lookup.resolve("KLO"), std::nullopt) << "the limit is the whole script's";
    EXPECT_LT(clock.now() - end, std::chrono::milliseconds(200));
    EXPECT_EQ(findInTime(database, "NOWHERE"), std::nullopt);
    EXPECT_THAT(warnings,
                testing::ElementsAre(testing::HasSubstr(file.string() + " took more than 2 seconds")));
}

TEST_F(EndlessTest, EachLookupHasTheWholeLimit) {
    EXPECT_EQ(findInTime(database, "NOWHERE"), std::nullopt);
    EXPECT_EQ(database.warnings(), warnings);
    EXPECT_EQ(find(database, "NONE5"), (Coordinate{1, 2}));
    EXPECT_THAT(database.warnings(), testing::IsEmpty()) << "it was in time now";
}

TEST_F(EndlessTest, SearchThatNobodyWantsEndsInTheMiddle) {
    const test::VirtualClock clock; // its time never comes
    int asked = 0;
    NavDatabase::Lookup lookup(database, clock, [&] { return ++asked < 20; });
    EXPECT_EQ(lookup.resolve("NOWHERE"), std::nullopt);
    EXPECT_EQ(asked, 20);
    EXPECT_EQ(lookup.resolve("KLO"), std::nullopt);
    EXPECT_EQ(asked, 20) << "it is not asked again";
    EXPECT_THAT(warnings, testing::IsEmpty());
}

TEST_F(NavDatabaseTest, ViewsUponViewsEndInTime) {
    std::string sql = "CREATE VIEW v0 AS SELECT 'X' AS fix_id, 1.0 AS lat, 2.0 AS lon;";
    for (int level = 1; level <= 40; ++level) {
        const auto before = "v" + std::to_string(level - 1);
        sql += "CREATE VIEW v" + std::to_string(level) +
               " AS SELECT a.fix_id, a.lat, b.lon FROM (SELECT * FROM " + before +
               " LIMIT 9) a, (SELECT * FROM " + before + " LIMIT 9) b;";
    }
    makeDatabase(file, sql + "CREATE VIEW enroute_fixes AS SELECT * FROM v40;");
    EXPECT_EQ(findInTime(NavDatabase(file.string()), "NOWHERE"), std::nullopt);
}

TEST_F(NavDatabaseTest, OneValueThatIsHugeIsNotFound) {
    makeDatabase(file,
                 "CREATE VIEW enroute_fixes AS SELECT replace(hex(zeroblob(400000000)), '0', 'X') AS fix_id,"
                 " 1.0 AS lat, 2.0 AS lon;");
    EXPECT_EQ(find(NavDatabase(file.string()), "NOWHERE"), std::nullopt);
}

TEST_F(NavDatabaseTest, ViewMayBeWrittenByNobodysFunctions) {
    // Of those that reach outside the file; plain ones are welcome.
    makeDatabase(
        file,
        "CREATE VIEW enroute_fixes AS SELECT load_extension('/none') AS fix_id, 1.0 AS lat, 2.0 AS lon;"
        "CREATE VIEW navaids AS SELECT upper('klo') AS nav_id, 1.0 AS lat, 2.0 AS lon;");
    EXPECT_EQ(find(NavDatabase(file.string()), "KLO"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseTest, NamesThatSqliteKnowsAreFilesHere) {
    const WorkingFolder here(folder.path());
    for (const std::string name : {"file:nav.db?mode=memory", "file:nav.db", ":memory:"}) {
        EXPECT_THAT(openingError(name), testing::HasSubstr("unable to open database file")) << name;
        makeDatabase("./" + name, tables + std::string("INSERT INTO navaids VALUES ('KLO', 1, 2);"));
        EXPECT_EQ(find(NavDatabase(name), "KLO"), (Coordinate{1, 2})) << name;
    }
}

// What the disk does

/// What SQLite takes for the disk, which may fail or hang. There is one, which never goes: threads that are
/// left behind use it still.
class Disk {
  public:
    static Disk& installed() {
        static auto* const disk = new Disk;
        return *disk;
    }

    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    /// Returns when nobody hangs any more.
    void recover() {
        opensHang = looksHang = looksFail = false;
        while (hanging > 0)
            std::this_thread::yield();
    }

    void waitUntilHanging(int count) const {
        while (hanging < count)
            std::this_thread::yield();
    }

    std::atomic<bool> opensHang = false;
    std::atomic<bool> looksHang = false;
    std::atomic<bool> looksFail = false;
    std::atomic<int> hanging = 0;

  private:
    struct Mine : sqlite3_vfs {
        Disk* disk;
    };

    Disk() {
        static_cast<sqlite3_vfs&>(mine_) = *base_;
        mine_.disk = this;
        mine_.zName = "tarnly-test-disk";
        mine_.xOpen = [](sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
            auto& disk = *static_cast<Mine*>(vfs)->disk;
            disk.pass(disk.opensHang);
            return disk.base_->xOpen(disk.base_, name, file, flags, outFlags);
        };
        // The first that a transaction asks for.
        mine_.xAccess = [](sqlite3_vfs* vfs, const char* name, int flags, int* result) {
            auto& disk = *static_cast<Mine*>(vfs)->disk;
            disk.pass(disk.looksHang);
            if (disk.looksFail) return SQLITE_IOERR_ACCESS;
            return disk.base_->xAccess(disk.base_, name, flags, result);
        };
        sqlite3_vfs_register(&mine_, 1);
    }
    void pass(const std::atomic<bool>& hangs) {
        if (!hangs) return;
        ++hanging;
        while (hangs)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --hanging;
    }

    sqlite3_vfs* const base_ = sqlite3_vfs_find(nullptr);
    Mine mine_{};
};

struct NavDatabaseDiskTest : NavDatabaseTest {
    NavDatabaseDiskTest() {
        makeDatabase(file, tables + std::string("INSERT INTO navaids VALUES ('KLO', 1, 2);"));
    }

    NavDatabase opened(std::chrono::milliseconds limit = std::chrono::minutes(1)) {
        return NavDatabase(
            file.string(), [this](const Phrase& text) { warnings.push_back(text); }, limit);
    }

    ~NavDatabaseDiskTest() override { disk.recover(); }

    Disk& disk = Disk::installed();
    std::vector<Phrase> warnings;
};

TEST_F(NavDatabaseDiskTest, WhatCannotBeReadIsToldOnceAndFoundWhenItCan) {
    const auto database = opened();
    disk.looksFail = true;
    EXPECT_EQ(find(database, "KLO"), std::nullopt);
    EXPECT_EQ(find(database, "KLO"), std::nullopt);
    EXPECT_EQ(database.warnings(), warnings);
    disk.looksFail = false;
    EXPECT_EQ(find(database, "KLO"), (Coordinate{1, 2}));
    EXPECT_THAT(database.warnings(), testing::IsEmpty());
    disk.looksFail = true;
    EXPECT_EQ(find(database, "KLO"), std::nullopt);
    EXPECT_THAT(database.warnings(), testing::SizeIs(1)) << "it is so again, though it has been told once";
    EXPECT_THAT(warnings, testing::ElementsAre(testing::AllOf(
                              testing::HasSubstr(file.string() + " cannot be read (disk I/O error"),
                              testing::HasSubstr("load the script again"))));
}

TEST_F(NavDatabaseDiskTest, WhatIsNotFoundInASoundDatabaseIsNoFailure) {
    EXPECT_EQ(find(opened(), "NONE"), std::nullopt);
    EXPECT_THAT(warnings, testing::IsEmpty());
}

TEST_F(NavDatabaseDiskTest, OneThatHangsCostsItsScriptTheRestAndOthersNothing) {
    const auto database = opened();
    disk.looksHang = true;
    EXPECT_EQ(findInTime(database, "KLO"), std::nullopt);
    EXPECT_THAT(warnings, testing::ElementsAre(testing::HasSubstr("took more than 2 seconds")));
    disk.waitUntilHanging(1);
    disk.looksHang = false;
    EXPECT_EQ(find(database, "KLO"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseDiskTest, AllThatHungServeAgain) {
    const auto database = opened();
    disk.looksHang = true;
    for (std::size_t i = 0; i < NavDatabase::sideBySide; ++i)
        EXPECT_EQ(findInTime(database, "KLO"), std::nullopt);
    disk.waitUntilHanging(NavDatabase::sideBySide);
    EXPECT_EQ(findInTime(database, "KLO"), std::nullopt) << "it waits in vain for one of them";
    disk.recover();
    EXPECT_EQ(find(database, "KLO"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseDiskTest, NeitherItsMakingNorItsEndWaitsForADiskThatHangs) {
    disk.opensHang = true;
    {
        const auto database = opened(std::chrono::milliseconds(1));
        EXPECT_THAT(warnings,
                    testing::ElementsAre(testing::HasSubstr("has not opened within 1 milliseconds")));
        EXPECT_EQ(findInTime(database, "KLO"), std::nullopt);
        EXPECT_EQ(warnings.size(), 1U);
        EXPECT_EQ(database.warnings(), warnings);
        disk.waitUntilHanging(1);
    }
    disk.recover();
}

TEST_F(NavDatabaseDiskTest, WhatOpensLateServesFromThenOn) {
    disk.opensHang = true;
    const auto database = opened(std::chrono::milliseconds(1));
    disk.waitUntilHanging(1);
    disk.recover();
    EXPECT_EQ(find(database, "KLO"), (Coordinate{1, 2}));
}

TEST_F(NavDatabaseDiskTest, WhatDoesNotOpenAfterAllIsTold) {
    disk.opensHang = true;
    const auto database = opened(std::chrono::milliseconds(1));
    disk.waitUntilHanging(1);
    fs::remove(file);
    disk.recover();
    EXPECT_EQ(find(database, "KLO"), std::nullopt);
    ASSERT_EQ(warnings.size(), 2U);
    EXPECT_THAT(warnings[1], testing::HasSubstr("cannot be read (openFailed("));
}

TEST_F(NavDatabaseDiskTest, WhatIsNoNavigationDatabaseIsTold) {
    folder.write("nav.db", std::string(5000, 'x'));
    EXPECT_EQ(find(opened(), "KLO"), std::nullopt);
    EXPECT_THAT(warnings, testing::ElementsAre(testing::HasSubstr("(file is not a database)")));
    fs::remove(file);
    makeDatabase(file, "CREATE TABLE other (x)");
    EXPECT_EQ(find(opened(), "KLO"), std::nullopt);
    ASSERT_EQ(warnings.size(), 2U);
    EXPECT_THAT(warnings[1], testing::HasSubstr("(no such table: "));
}

TEST_F(NavDatabaseDiskTest, OneTableIsEnough) {
    fs::remove(file);
    makeDatabase(file, "CREATE TABLE navaids (nav_id TEXT, lat REAL, lon REAL);");
    EXPECT_EQ(find(opened(), "KLO"), std::nullopt);
    EXPECT_THAT(warnings, testing::IsEmpty());
}

} // namespace
} // namespace tarnly
