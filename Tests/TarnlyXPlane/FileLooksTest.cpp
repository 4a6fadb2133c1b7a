#include "TarnlyXPlane/FileLooks.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <boost/asio/detached.hpp>
#include <latch>
#include <mutex>
#include <semaphore>
#include <stdexcept>
#include <vector>

#include "Support/RunTask.hpp"

namespace tarnly {
namespace {

/// A disk on which the paths that begin with "hung" answer when they are let. Outlives whoever looks: threads
/// that hang are left behind.
struct Disk {
    std::counting_semaphore<> lets{0};
    std::atomic<int> looks = 0;
    std::atomic<int> hanging = 0;

    std::string look(const std::string& path) {
        const int number = ++looks;
        if (path == "missing") throw std::runtime_error("no such file");
        if (path.starts_with("hung")) {
            ++hanging;
            lets.acquire();
            --hanging;
        }
        return path + " at look " + std::to_string(number);
    }
};

/// In real time: nothing here waits for longer than its threads take to start.
struct FileLooksTest : testing::Test {
    using Looks = FileLooks<std::string>;

    boost::asio::io_context io;
    std::shared_ptr<Disk> disk = std::make_shared<Disk>();
    std::optional<Looks> looks;
    std::vector<std::string> found;

    FileLooksTest() {
        looks.emplace(io.get_executor(), [disk = disk](const std::string& path) { return disk->look(path); });
    }

    ~FileLooksTest() override { letGo(disk->hanging); }

    void letGo(int count) { disk->lets.release(count); }

    void ask(const std::string& path) {
        boost::asio::co_spawn(io, looks->at(path),
                              [this](const std::exception_ptr& failure, std::string text) {
                                  found.push_back(failure ? "failed" : std::move(text));
                              });
        io.poll();
        io.restart();
    }

    void until(const std::function<bool()>& condition) { ASSERT_TRUE(test::runUntil(io, condition)); }
};

TEST_F(FileLooksTest, FindsAndFails) {
    EXPECT_EQ(test::runTask(io, looks->at("a")), "a at look 1");
    EXPECT_THROW(test::runTask(io, looks->at("missing")), std::runtime_error);
    EXPECT_EQ(test::runTask(io, looks->at("a")), "a at look 3");
}

TEST_F(FileLooksTest, OneThatHangsHoldsUpNobodyElse) {
    ask("hung");
    until([&] { return disk->hanging == 1; });
    EXPECT_EQ(test::runTask(io, looks->at("a")), "a at look 2");
    EXPECT_THAT(found, testing::IsEmpty());
    letGo(1);
    until([&] { return found.size() == 1; });
    EXPECT_EQ(found.at(0), "hung at look 1");
}

TEST_F(FileLooksTest, WhoComesWhileOneHangsSharesTheNextAndNoThreadsPileUp) {
    for (int i = 0; i < 100; ++i)
        ask("hung");
    until([&] { return disk->hanging == 1; });
    EXPECT_EQ(disk->looks, 1);
    letGo(1);
    until([&] { return disk->looks == 2; });
    until([&] { return found.size() == 1; });
    EXPECT_EQ(found.at(0), "hung at look 1") << "theirs would have begun too early";
    letGo(1);
    until([&] { return found.size() == 100; });
    EXPECT_EQ(disk->looks, 2);
    EXPECT_EQ(found.back(), "hung at look 2");
}

TEST_F(FileLooksTest, AsManyHangAsMayAndTheNextWaits) {
    for (std::size_t i = 0; i < Looks::sideBySide; ++i)
        ask("hung" + std::to_string(i));
    until([&] { return disk->hanging == Looks::sideBySide; });
    ask("a");
    until([&] { return disk->looks == Looks::sideBySide; });
    EXPECT_THAT(found, testing::IsEmpty());
    letGo(1);
    until([&] { return found.size() == 2; });
    EXPECT_EQ(found.at(1), "a at look " + std::to_string(Looks::sideBySide + 1));
}

TEST_F(FileLooksTest, FolderInWhichAllHangHoldsUpNoOther) {
    for (std::size_t i = 0; i < 2 * Looks::sideBySide; ++i)
        ask("hung/" + std::to_string(i));
    until([&] { return disk->hanging == Looks::sideBySide; });
    EXPECT_THAT(test::runTask(io, looks->at("sound/a")), testing::StartsWith("sound/a"));
}

TEST_F(FileLooksTest, FoldersWithoutEndTakeNoThreadsWithoutEnd) {
    for (std::size_t i = 0; i <= Looks::inAll; ++i)
        ask("hung" + std::to_string(i) + "/a");
    until([&] { return disk->hanging == Looks::inAll; });
    EXPECT_EQ(disk->looks, Looks::inAll);
    letGo(1);
    until([&] { return found.size() == 1 && disk->hanging == Looks::inAll; });
}

TEST_F(FileLooksTest, TheEndWaitsForNoThread) {
    ask("hung");
    until([&] { return disk->hanging == 1; });
    looks.reset();
    letGo(1);
    while (disk->hanging > 0)
        std::this_thread::yield();
    io.run_for(std::chrono::milliseconds(20));
    EXPECT_THAT(found, testing::IsEmpty()) << "what is found then is nobody's";
}

} // namespace
} // namespace tarnly
