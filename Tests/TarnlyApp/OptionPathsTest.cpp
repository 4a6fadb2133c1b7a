#include "TarnlyApp/OptionPaths.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "Support/TemporaryFolder.hpp"

namespace tarnly {
namespace {

using testing::Optional;
using testing::StartsWith;

/// Nothing here takes long, but machines may be busy.
constexpr auto plenty = std::chrono::minutes(2);

std::optional<std::string> problemOfDatabase(const std::filesystem::path& file) {
    CompanionOptions options;
    options.navigationDatabase = file;
    return problemOfPaths(options, plenty);
}

std::optional<std::string> problemOfSituations(const std::filesystem::path& folder) {
    CompanionOptions options;
    options.situationsFolder = folder;
    return problemOfPaths(options, plenty);
}

TEST(OptionPaths, WithoutPathsNothingIsWrong) { EXPECT_EQ(problemOfPaths({}, plenty), std::nullopt); }

TEST(OptionPaths, SituationsAreAFolder) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(problemOfSituations(folder.path()), std::nullopt);
    const auto missing = folder.path() / "later";
    EXPECT_THAT(problemOfSituations(missing),
                Optional("--situations: " + missing.string() +
                         " does not exist; name the folder in which the simulator saves its situations"));
    const auto file = folder.write("a.sit", "");
    EXPECT_THAT(problemOfSituations(file),
                Optional(StartsWith("--situations: " + file.string() + " is no folder; name ")));
}

TEST(OptionPaths, ADatabaseIsADatabase) {
    const test::TemporaryFolder folder;
    EXPECT_THAT(problemOfDatabase(folder.path() / "nav.db"), Optional(StartsWith("--nav-db: ")));
    EXPECT_THAT(problemOfDatabase(folder.write("nav.db", "text")), Optional(StartsWith("--nav-db: ")));
}

TEST(OptionPaths, ADiskThatDoesNotAnswerIsNoMistake) {
    const test::TemporaryFolder folder;
    const auto pipe = folder.path() / "nav.db"; // whose opening waits for somebody who writes
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    CompanionOptions options;
    options.navigationDatabase = pipe;
    EXPECT_EQ(problemOfPaths(options, std::chrono::milliseconds(50)), std::nullopt);
    const std::ofstream writer(pipe); // the look that was left behind ends as well
}

} // namespace
} // namespace tarnly
