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
    EXPECT_EQ(complaintAbout(missing), "no companion runs on the data folder " + missing.string() +
                                           "; start tarnly or tarnlyd, or name another folder by --data-dir");
}

TEST(StatusQuery, DoesNotWaitForEver) {
    const test::TemporaryFolder folder;
    const LocalSocketFile hangs(statusSocketIn(folder.path()));
    EXPECT_EQ(complaintAbout(folder.path()), "the companion on the data folder " + folder.path().string() +
                                                 " does not answer; end it, and start it again");
}

} // namespace
} // namespace tarnly
