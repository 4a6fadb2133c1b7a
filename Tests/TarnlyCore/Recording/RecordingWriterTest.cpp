#include "TarnlyCore/Recording/RecordingWriter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/asio/detached.hpp>
#include <condition_variable>
#include <future>
#include <mutex>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"
#include "TarnlyCore/Recording/SampleList.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;

/// A disk in memory, of which a test holds the writes.
struct Disk {
    std::mutex mutex;
    std::condition_variable changed;
    bool hangs = false;
    std::vector<std::string> opened;
    std::vector<std::string> writes;
    std::size_t begun = 0;
    std::size_t flushes = 0;

    void setHangs(bool value) {
        const std::lock_guard lock(mutex);
        hangs = value;
        changed.notify_all();
    }

    void waitUntil(const std::function<bool()>& condition) {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 60s, condition));
    }

    class Sink final : public LogSink {
      public:
        explicit Sink(Disk& disk) : disk_(disk) {}

        std::size_t write(std::string_view text) override {
            std::unique_lock lock(disk_.mutex);
            ++disk_.begun;
            disk_.changed.notify_all();
            disk_.changed.wait(lock, [&] { return !disk_.hangs; });
            disk_.writes.emplace_back(text);
            return text.size();
        }
        void flush() override {
            const std::lock_guard lock(disk_.mutex);
            ++disk_.flushes;
            disk_.changed.notify_all();
        }

      private:
        Disk& disk_;
    };

    RecordingWriter::OpenLog opener() {
        return [this](const std::filesystem::path& file) {
            const std::lock_guard lock(mutex);
            opened.push_back(file.filename().string());
            return std::make_unique<Sink>(*this);
        };
    }
};

std::string text(const LogLine& line) { return encodeJson(line) + "\n"; }

std::string sampleLine(double time) { return text(LogLine::of(test::sampleAt(time))); }

struct RecordingWriterTest : testing::Test {
    Disk disk;
    SampleList samples;
    std::optional<RecordingWriter> writer{std::in_place, disk.opener(), 1h};
    RecordingWriter::FileName name = std::make_shared<Guarded<std::string>>();

    void write(double time, const std::vector<std::string>& ids = {}) {
        writer->write({samples.append(test::sampleAt(time)), test::firing(time, ids)});
    }

    std::future<void> written() {
        auto promise = std::make_shared<std::promise<void>>();
        writer->notify([promise] { promise->set_value(); });
        return promise->get_future();
    }

    static bool isThere(const std::future<void>& future) {
        return future.wait_for(0s) == std::future_status::ready;
    }
};

TEST_F(RecordingWriterTest, ASampleAndWhatFiredOnItAreOneWrite) {
    writer->begin("a.jsonl", name);
    write(1, {"x", "y"});
    written().get();
    write(2);
    written().get();
    const auto first =
        sampleLine(1) + text(LogLine::of(test::firedAt(1, "x"))) + text(LogLine::of(test::firedAt(1, "y")));
    EXPECT_EQ(disk.writes, (std::vector{first, sampleLine(2)}));
}

TEST_F(RecordingWriterTest, AHundredThousandTriggersOnOneSampleAreOneWrite) {
    writer->begin("a.jsonl", name);
    write(1, std::vector<std::string>(100'000, "x"));
    written().get();
    ASSERT_EQ(disk.writes.size(), 1U);
    EXPECT_EQ(std::ranges::count(disk.writes[0], '\n'), 100'001);
}

TEST_F(RecordingWriterTest, WhatWaitsForASlowDiskIsWrittenAtOnceAndInOrder) {
    writer->begin("a.jsonl", name);
    disk.setHangs(true);
    write(1);
    disk.waitUntil([&] { return disk.begun == 1; });
    for (const double time : {2.0, 3.0, 4.0})
        write(time);
    const auto all = written();
    EXPECT_FALSE(isThere(all));
    disk.setHangs(false);
    all.wait();
    EXPECT_EQ(disk.writes, (std::vector{sampleLine(1), sampleLine(2) + sampleLine(3) + sampleLine(4)}));
}

TEST_F(RecordingWriterTest, TheNextLogIsOpenedWhenTheLastIsWritten) {
    writer->begin("a.jsonl", name);
    disk.setHangs(true);
    write(1);
    writer->begin("b.jsonl", name);
    write(2);
    disk.waitUntil([&] { return disk.begun == 1; });
    EXPECT_EQ(disk.opened, std::vector<std::string>{"a.jsonl"});
    disk.setHangs(false);
    written().get();
    EXPECT_EQ(disk.opened, (std::vector<std::string>{"a.jsonl", "b.jsonl"}));
    EXPECT_EQ(disk.writes, (std::vector{sampleLine(1), sampleLine(2)}));
}

TEST_F(RecordingWriterTest, TellsTheAbsolutePathOfALogThatIsThere) {
    writer->begin("a.jsonl", name);
    written().get();
    EXPECT_EQ(name->copy(), std::filesystem::absolute("a.jsonl").string());
}

TEST_F(RecordingWriterTest, WithoutALogNothingIsWrittenOrTold) {
    writer.emplace([](const std::filesystem::path&) { return nullptr; }, 1h);
    writer->begin("a.jsonl", name);
    write(1);
    writer->end();
    written().get();
    EXPECT_EQ(name->copy(), "");
}

TEST_F(RecordingWriterTest, BehindTheEndNothingIsWritten) {
    write(0);
    writer->begin("a.jsonl", name);
    write(1);
    writer->end();
    write(2);
    written().get();
    EXPECT_EQ(disk.writes, std::vector{sampleLine(1)});
}

TEST_F(RecordingWriterTest, ItsOwnEndWaitsForTheDisk) {
    writer->begin("a.jsonl", name);
    disk.setHangs(true);
    write(1);
    write(2);
    auto ending = std::async(std::launch::async, [&] { writer.reset(); });
    disk.waitUntil([&] { return disk.begun == 1; });
    EXPECT_FALSE(isThere(ending));
    disk.setHangs(false);
    ending.get();
    std::string all;
    for (const auto& write : disk.writes)
        all += write;
    EXPECT_EQ(all, sampleLine(1) + sampleLine(2));
    EXPECT_EQ(disk.flushes, 1U);
}

TEST_F(RecordingWriterTest, TheDiskIsMadeToKeepALogThatEnds) {
    writer->begin("a.jsonl", name);
    write(1);
    written().get();
    EXPECT_EQ(disk.flushes, 0U); // an hour has not passed
    writer->end();
    disk.waitUntil([&] { return disk.flushes == 1; });
}

TEST_F(RecordingWriterTest, TheDiskIsMadeToKeepWhatWasWrittenThoughNothingFollows) {
    writer.emplace(disk.opener(), 1ms);
    writer->begin("a.jsonl", name);
    for (std::size_t round = 1; round <= 3; ++round) {
        write(static_cast<double>(round));
        disk.waitUntil([&] { return disk.flushes == round; });
    }
}

/// The recorder that lives on such a disk.
struct SlowDiskTest : testing::Test {
    const test::TemporaryFolder folder;
    Disk disk;
    SystemClock clock;
    FlightRecorder recording{folder.path(), clock, FlightRecorder::systemTime, disk.opener()};
};

TEST_F(SlowDiskTest, NobodyWaitsWhileAWriteHangs) {
    disk.setHangs(true);
    recording.start();
    test::record(recording, test::sampleAt(1), {"x"});
    disk.waitUntil([&] { return disk.begun == 1; });
    // All of this would hang otherwise, as the disk does not come back before.
    test::record(recording, test::sampleAt(2), {"y"});
    EXPECT_EQ(test::catchUp(recording), (RecordedFlight{{test::sampleAt(1), test::sampleAt(2)},
                                                        {test::firedAt(1, "x"), test::firedAt(2, "y")}}));
    EXPECT_EQ(recording.progress()->samples, 2U);
    recording.stop();
    recording.start();
    EXPECT_EQ(recording.progress()->file, "");
    disk.setHangs(false);
    test::waitUntilWritten(recording);
    EXPECT_NE(recording.progress()->file, "");
}

TEST_F(SlowDiskTest, AStopIsWrittenWhenTheFileIsWhole) {
    recording.start();
    disk.setHangs(true);
    recording.recordSample(test::sampleAt(1));
    recording.stop();
    boost::asio::io_context io;
    bool isWritten = false;
    boost::asio::co_spawn(io, recording.written(), [&](const std::exception_ptr&) { isWritten = true; });
    disk.waitUntil([&] { return disk.begun == 1; });
    io.poll();
    EXPECT_FALSE(isWritten);
    disk.setHangs(false);
    EXPECT_TRUE(test::runUntil(io, [&] { return isWritten; }));
    EXPECT_EQ(disk.writes, std::vector{sampleLine(1)});
}

TEST_F(SlowDiskTest, WhoStopsWaitingIsNotMissed) {
    disk.setHangs(true);
    recording.start();
    recording.recordSample(test::sampleAt(1));
    {
        boost::asio::io_context io;
        test::runTask(io, recording.written(1ms));
        boost::asio::co_spawn(io, recording.written(), boost::asio::detached);
        io.restart();
        io.poll(); // and goes while it waits
    }
    disk.setHangs(false);
    test::waitUntilWritten(recording);
    EXPECT_EQ(disk.writes, std::vector{sampleLine(1)});
}

} // namespace
} // namespace tarnly
