#include "TarnlyCore/Protocol/StatusQuery.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Net/LocalSocketFile.hpp"

namespace tarnly {
namespace {

std::string complaintAbout(const std::filesystem::path& dataFolder) {
    try {
        return "answered: " + askForStatus(dataFolder, std::chrono::milliseconds(50));
    } catch (const StatusQueryError& error) {
        return error.what();
    }
}

TEST(StatusQuery, SaysWhatToDoWhereNoneRuns) {
    const test::TemporaryFolder folder;
    const auto missing = folder.path() / "missing";
    EXPECT_EQ(complaintAbout(missing),
              "no companion runs on the data folder " + missing.string() +
                  "; start tarnly or tarnlyd, or name another folder by --data-dir; "
                  "why tarnlyd does not stay is told by journalctl --user -u tarnlyd");
}

TEST(StatusQuery, WhereNothingCanBeWrittenNoneCanTellOfItself) {
    // Not even root can make anything in a file.
    const test::TemporaryFolder folder;
    const auto blocked = folder.write("file", "") / "data";
    EXPECT_EQ(complaintAbout(blocked),
              "no companion can tell of itself in the data folder " + blocked.string() +
                  ": Not a directory; make it one that you may write to, or name another "
                  "by --data-dir");
}

TEST(StatusQuery, DoesNotWaitForEver) {
    const test::TemporaryFolder folder;
    const LocalSocketFile hangs(statusSocketIn(folder.path()));
    EXPECT_EQ(complaintAbout(folder.path()), "the companion on the data folder " + folder.path().string() +
                                                 " does not answer; end it, and start it again");
}

} // namespace
} // namespace tarnly
