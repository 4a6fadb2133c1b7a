#include "TarnlyPlatform/Net/LocalSocket.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <stdexcept>

#include "Support/RunTask.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyPlatform/Base/WorkerPool.hpp"
#include "TarnlyPlatform/Net/LocalSocketFile.hpp"
#include "TarnlyPlatform/Net/NetworkError.hpp"
#include "TarnlyPlatform/Net/RealTime.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using test::patience;
using testing::HasSubstr;
namespace fs = std::filesystem;

Task<std::string> answerWith(std::string text) { co_return text; }

Task<std::string> fail() {
    throw std::runtime_error("no answer");
    co_return "";
}

Task<std::string> neverAnswer(Clock& clock) {
    co_await clock.sleepFor(24h);
    co_return "";
}

LocalListener::Answer answering(std::string text) {
    return [text = std::move(text)] { return answerWith(text); };
}

/// Asks on a thread of its own, as another program does.
Task<std::string> askElsewhere(WorkerPool& workers, fs::path file, std::chrono::milliseconds limit) {
    auto ask = [file = std::move(file), limit] { return askLocally(file, limit); };
    auto answer = co_await workers.run(std::move(ask));
    co_return answer;
}

struct LocalSocketTest : testing::Test {
    boost::asio::io_context io;
    SystemClock clock;
    WorkerPool workers{1};
    test::TemporaryFolder folder;
    fs::path file = folder.path() / "status.socket";

    std::unique_ptr<LocalListener> listen(LocalListener::Answer answer) {
        return std::make_unique<LocalListener>(io.get_executor(), clock, file, std::move(answer));
    }

    std::string ask(std::chrono::milliseconds limit = patience) {
        return test::runTask(io, askElsewhere(workers, file, limit));
    }

    std::optional<NetworkError> failureOfAsking(std::chrono::milliseconds limit = patience) {
        try {
            ask(limit);
            return std::nullopt;
        } catch (const NetworkError& error) {
            return error;
        }
    }
};

TEST_F(LocalSocketTest, WhoAsksIsAnswered) {
    int asked = 0;
    const auto listener = listen([&] { return answerWith("answer " + std::to_string(++asked)); });
    EXPECT_EQ(ask(), "answer 1");
    EXPECT_EQ(ask(), "answer 2");
}

TEST_F(LocalSocketTest, ALongAnswerComesWhole) {
    const std::string text(500'000, 'x');
    const auto listener = listen(answering(text));
    EXPECT_EQ(ask(), text);
}

TEST_F(LocalSocketTest, TheSocketIsItsOwnersAlone) {
    const auto listener = listen(answering("x"));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(LocalSocketTest, TheLengthOfThePathDoesNotMatter) {
    const auto deep = folder.path() / std::string(100, 'a') / std::string(100, 'b');
    fs::create_directories(deep);
    file = deep / "status.socket";
    auto listener = listen(answering("from afar"));
    EXPECT_EQ(ask(), "from afar");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    listener.reset();
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(LocalSocketTest, ASecondOneDoesNotTakeItAway) {
    auto first = listen(answering("first"));
    try {
        listen(answering("second"));
        FAIL() << "two have one socket";
    } catch (const NetworkError& error) {
        EXPECT_EQ(error.which(), NetworkError::Case::listenFailed);
        EXPECT_THAT(error.what(), HasSubstr("another process answers here already"));
    }
    EXPECT_EQ(ask(), "first");
    first.reset();
    const auto third = listen(answering("third"));
    EXPECT_EQ(ask(), "third");
}

TEST_F(LocalSocketTest, WhatAKilledOneLeftBehindIsReplaced) {
    auto killed = std::make_unique<LocalSocketFile>(file);
    const auto keptName = folder.path() / "kept";
    fs::create_hard_link(file, keptName);
    killed.reset();
    fs::rename(keptName, file); // the file of a socket that is no more
    EXPECT_EQ(failureOfAsking()->which(), NetworkError::Case::connectionFailed);
    const auto listener = listen(answering("new"));
    EXPECT_EQ(ask(), "new");
}

TEST_F(LocalSocketTest, AtTheEndTheSocketIsRemoved) {
    listen(answering("x")).reset();
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(failureOfAsking()->which(), NetworkError::Case::connectionFailed);
}

TEST_F(LocalSocketTest, AFolderThatIsNotThereIsTold) {
    file = folder.path() / "missing" / "status.socket";
    try {
        listen(answering("x"));
        FAIL() << "listens in a folder that is not there";
    } catch (const NetworkError& error) {
        EXPECT_THAT(error.what(), HasSubstr("No such file or directory"));
    }
}

TEST_F(LocalSocketTest, AnAnswerThatFailsIsNoAnswer) {
    const auto listener = listen([] { return fail(); });
    EXPECT_EQ(failureOfAsking()->which(), NetworkError::Case::connectionClosed);
}

TEST_F(LocalSocketTest, WhoAsksDoesNotWaitForEver) {
    const auto listener = listen([this] { return neverAnswer(clock); });
    EXPECT_EQ(failureOfAsking(50ms)->which(), NetworkError::Case::timedOut);
}

} // namespace
} // namespace tarnly
