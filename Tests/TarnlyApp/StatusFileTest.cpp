#include "TarnlyApp/StatusFile.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "Support/RunTask.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/VirtualClock.hpp"
#include "TarnlyApp/StatusReporter.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;
namespace fs = std::filesystem;

/// The test's time goes on when it says so; workers write in their own.
struct StatusFileTest : testing::Test {
    StatusFileTest() { status.words = Phrase::verbatim("one"); }
    ~StatusFileTest() override { file.reset(); }

    void start() {
        file.emplace(
            io.get_executor(), workers, clock, path, [this] { return status; },
            [this](const std::string& text) { complaints.push_back(text); });
        file->start();
        untilItWaits();
    }

    void untilItWaits() {
        const auto deadline = std::chrono::steady_clock::now() + 60s;
        while (clock.sleeping() == 0) {
            if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("it never waits");
            io.restart();
            io.run_for(1ms);
        }
    }

    void pass(Clock::Duration time) {
        clock.advance(io, time);
        untilItWaits();
    }

    std::string jsonOf(const std::string& words) {
        auto expected = status;
        expected.words = Phrase::verbatim(words);
        return encodeJson(expected) + "\n";
    }

    boost::asio::io_context io;
    test::VirtualClock clock;
    WorkerPool workers{1};
    test::TemporaryFolder folder;
    fs::path path = folder.path() / "status.json";
    CompanionStatus status;
    std::vector<std::string> complaints;
    std::optional<StatusFile> file;
};

TEST_F(StatusFileTest, IsThereFromTheStartAsOneLineForItsOwner) {
    start();
    EXPECT_EQ(test::contentOf(path), jsonOf("one"));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1);
    EXPECT_THAT(complaints, IsEmpty());
}

TEST_F(StatusFileTest, FollowsAChangeOnceASecond) {
    start();
    status.words = Phrase::verbatim("two");
    pass(999ms);
    EXPECT_EQ(test::contentOf(path), jsonOf("one"));
    pass(1ms);
    EXPECT_EQ(test::contentOf(path), jsonOf("two"));
}

TEST_F(StatusFileTest, IsLeftAloneWhileNothingChanges) {
    start();
    fs::remove(path);
    pass(10s);
    EXPECT_FALSE(fs::exists(path));
    status.words = Phrase::verbatim("two");
    pass(1s);
    EXPECT_EQ(test::contentOf(path), jsonOf("two"));
}

TEST_F(StatusFileTest, IsReplacedAndNotWrittenOver) {
    start();
    fs::create_hard_link(path, folder.path() / "held by a reader");
    status.words = Phrase::verbatim("two");
    pass(1s);
    EXPECT_EQ(test::contentOf(folder.path() / "held by a reader"), jsonOf("one"));
    EXPECT_EQ(test::contentOf(path), jsonOf("two"));
}

TEST_F(StatusFileTest, WhatCannotBeWrittenIsToldOnceWithTheCureAndTriedAgain) {
    folder.write("file", "in place of the folder");
    path = folder.path() / "file" / "status.json";
    start();
    pass(5s);
    ASSERT_EQ(complaints.size(), 1U);
    EXPECT_THAT(complaints[0], StartsWith("the status file " + path.string() + " cannot be written: "));
    EXPECT_THAT(complaints[0], EndsWith("; name one by --status-file in a folder that you may write to"));
    fs::remove(folder.path() / "file");
    pass(1s);
    EXPECT_EQ(test::contentOf(path), jsonOf("one"));
    EXPECT_EQ(complaints.size(), 1U);
}

TEST_F(StatusFileTest, WhatIsNoOrdinaryFileIsNotReplaced) {
    fs::create_directory(path);
    start();
    EXPECT_TRUE(fs::is_directory(path));
    ASSERT_EQ(complaints.size(), 1U);
    EXPECT_THAT(complaints[0], testing::HasSubstr("it is no ordinary file"));
}

TEST_F(StatusFileTest, TheLastWordStays) {
    start();
    auto last = endedStatus(Phrase::verbatim("ended"), "/d");
    test::runTask(io, file->finish(last));
    EXPECT_EQ(test::contentOf(path), encodeJson(last) + "\n");
    status.words = Phrase::verbatim("two");
    clock.advance(io, 5s);
    EXPECT_EQ(test::contentOf(path), encodeJson(last) + "\n");
}

} // namespace
} // namespace tarnly
