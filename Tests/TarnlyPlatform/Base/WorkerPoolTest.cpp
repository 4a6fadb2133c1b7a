#include "TarnlyPlatform/Base/WorkerPool.hpp"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "Support/RunTask.hpp"

namespace tarnly {
namespace {

struct Threads {
    std::thread::id caller;
    std::thread::id worker;
    std::thread::id resumed;
};

Task<Threads> visitWorker(WorkerPool& workers) {
    Threads threads;
    threads.caller = std::this_thread::get_id();
    auto work = [] { return std::this_thread::get_id(); };
    threads.worker = co_await workers.run(work);
    threads.resumed = std::this_thread::get_id();
    co_return threads;
}

Task<std::string> moveThrough(WorkerPool& workers) {
    auto work = [text = std::make_unique<std::string>("moved")] { return *text; };
    auto result = co_await workers.run(std::move(work));
    co_return result;
}

Task<> failOnWorker(WorkerPool& workers) {
    auto work = [] { throw std::runtime_error("from the worker"); };
    co_await workers.run(work);
}

TEST(WorkerPool, RunsAsideAndResumesOnTheCallersThread) {
    boost::asio::io_context io;
    WorkerPool workers;
    const auto threads = test::runTask(io, visitWorker(workers));
    EXPECT_NE(threads.worker, threads.caller);
    EXPECT_EQ(threads.resumed, threads.caller);
}

TEST(WorkerPool, TakesWorkThatCanOnlyBeMoved) {
    boost::asio::io_context io;
    WorkerPool workers;
    EXPECT_EQ(test::runTask(io, moveThrough(workers)), "moved");
}

/// Notes on which thread it is destroyed.
struct Witness {
    std::shared_ptr<std::promise<std::thread::id>> destroyedOn;

    explicit Witness(std::shared_ptr<std::promise<std::thread::id>> promise)
        : destroyedOn(std::move(promise)) {}
    Witness(Witness&&) = default;
    ~Witness() {
        if (destroyedOn) destroyedOn->set_value(std::this_thread::get_id());
    }
};

TEST(WorkerPool, DestroysWhatIsLargeOnAWorker) {
    const auto here = std::this_thread::get_id();
    auto large = std::make_shared<std::promise<std::thread::id>>();
    auto small = std::make_shared<std::promise<std::thread::id>>();
    WorkerPool workers;
    workers.share(Witness(large), WorkerPool::longText + 1).reset();
    workers.share(Witness(small), WorkerPool::longText).reset();
    EXPECT_NE(large->get_future().get(), here);
    EXPECT_EQ(small->get_future().get(), here);
}

TEST(WorkerPool, WhatItSharesMayOutliveIt) {
    auto large = std::make_shared<std::promise<std::thread::id>>();
    std::shared_ptr<const Witness> kept;
    {
        WorkerPool workers;
        kept = workers.share(Witness(large), WorkerPool::longText + 1);
    }
    kept.reset();
    EXPECT_EQ(large->get_future().get(), std::this_thread::get_id());
}

TEST(WorkerPool, HandsFailuresToTheCaller) {
    boost::asio::io_context io;
    WorkerPool workers;
    EXPECT_THROW(test::runTask(io, failOnWorker(workers)), std::runtime_error);
}

} // namespace
} // namespace tarnly
