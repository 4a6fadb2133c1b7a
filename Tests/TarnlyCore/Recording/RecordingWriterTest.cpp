#include "TarnlyCore/Recording/RecordingWriter.hpp"

#include <gmock/gmock.h>
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
using test::lineText;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// A disk in memory, of which a test holds the writes.
struct HeldDisk {
    std::mutex mutex;
    std::condition_variable changed;
    bool hangs = false;
    bool flushHangs = false;
    bool isFull = false;
    std::vector<std::string> opened;
    std::vector<std::string> writes;
    std::size_t begun = 0;
    std::size_t flushes = 0;
    std::vector<std::string> told_;

    void setFull(bool value) {
        const std::lock_guard lock(mutex);
        isFull = value;
    }

    std::vector<std::string> told() {
        const std::lock_guard lock(mutex);
        return told_;
    }

    RecordingWriter::Tell teller() {
        return [this](const std::string& text) {
            const std::lock_guard lock(mutex);
            told_.push_back(text);
            changed.notify_all();
        };
    }

    void setHangs(bool value) {
        const std::lock_guard lock(mutex);
        hangs = value;
        changed.notify_all();
    }

    void setFlushHangs(bool value) {
        const std::lock_guard lock(mutex);
        flushHangs = value;
        changed.notify_all();
    }

    void waitUntil(const std::function<bool()>& condition) {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 60s, condition));
    }

    class Sink final : public LogSink {
      public:
        explicit Sink(HeldDisk& disk) : disk_(disk) {}

        std::error_code write(std::size_t place, std::string_view text) override {
            std::unique_lock lock(disk_.mutex);
            ++disk_.begun;
            disk_.changed.notify_all();
            disk_.changed.wait(lock, [&] { return !disk_.hangs; });
            if (disk_.isFull) return std::make_error_code(std::errc::no_space_on_device);
            EXPECT_EQ(place, size_);
            size_ += text.size();
            disk_.writes.emplace_back(text);
            return {};
        }
        std::error_code flush() override {
            std::unique_lock lock(disk_.mutex);
            ++disk_.flushes;
            disk_.changed.notify_all();
            disk_.changed.wait(lock, [&] { return !disk_.flushHangs; });
            return {};
        }
        bool isInPlace(std::size_t size) const override { return size == size_; }

      private:
        HeldDisk& disk_;
        std::size_t size_ = 0;
    };

    RecordingWriter::OpenLog opener() {
        return [this](const std::filesystem::path& file, MissingFolder) {
            const std::lock_guard lock(mutex);
            opened.push_back(file.filename().string());
            return OpenedLog{std::make_unique<Sink>(*this), file, {}};
        };
    }
};

std::string sampleLine(double time) { return lineText(LogLine::of(test::sampleAt(time))); }

struct RecordingWriterTest : testing::Test {
    HeldDisk disk;
    SampleList samples;
    std::optional<RecordingWriter> writer{std::in_place, disk.opener(), disk.teller(), never};
    RecordingWriter::SharedAccount account = std::make_shared<Guarded<LogInProgress::Account>>();
    static constexpr RecordingWriter::Pauses never{1h, 1h, 1h, 1h};

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
    writer->begin("a.jsonl", account);
    write(1, {"x", "y"});
    written().get();
    write(2);
    written().get();
    const auto first = sampleLine(1) + lineText(LogLine::of(test::firedAt(1, "x"))) +
                       lineText(LogLine::of(test::firedAt(1, "y")));
    EXPECT_EQ(disk.writes, (std::vector{first, sampleLine(2)}));
}

TEST_F(RecordingWriterTest, AHundredThousandTriggersOnOneSampleAreOneWrite) {
    writer->begin("a.jsonl", account);
    write(1, std::vector<std::string>(100'000, "x"));
    written().get();
    ASSERT_EQ(disk.writes.size(), 1U);
    EXPECT_EQ(std::ranges::count(disk.writes[0], '\n'), 100'001);
}

TEST_F(RecordingWriterTest, WhatWaitsForASlowDiskIsWrittenAtOnceAndInOrder) {
    writer->begin("a.jsonl", account);
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
    writer->begin("a.jsonl", account);
    disk.setHangs(true);
    write(1);
    writer->begin("b.jsonl", account);
    write(2);
    disk.waitUntil([&] { return disk.begun == 1; });
    EXPECT_EQ(disk.opened, std::vector<std::string>{"a.jsonl"});
    disk.setHangs(false);
    written().get();
    EXPECT_EQ(disk.opened, (std::vector<std::string>{"a.jsonl", "b.jsonl"}));
    EXPECT_EQ(disk.writes, (std::vector{sampleLine(1), sampleLine(2)}));
}

TEST_F(RecordingWriterTest, TellsTheAbsolutePathOfALogThatIsThere) {
    writer->begin("a.jsonl", account);
    written().get();
    EXPECT_EQ(account->copy().file, std::filesystem::absolute("a.jsonl").string());
}

TEST_F(RecordingWriterTest, NobodyWaitsForADiskThatRefuses) {
    disk.setFull(true);
    writer->begin("a.jsonl", account);
    write(1);
    written().get();
    EXPECT_THAT(account->copy().problem, HasSubstr("a.jsonl is not being written"));
    EXPECT_THAT(writer->problemsOfEarlier(), IsEmpty());
    writer->end();
    written().get();
    EXPECT_THAT(writer->problemsOfEarlier(), ElementsAre(account->copy().problem));
    EXPECT_THAT(disk.told(), ElementsAre(account->copy().problem));
}

TEST_F(RecordingWriterTest, ALogThatWaitsIsTriedAgainThoughItsRecordingHasEnded) {
    writer.emplace(disk.opener(), disk.teller(), RecordingWriter::Pauses{1h, 1ms, 1h, 1h});
    disk.setFull(true);
    for (const char* file : {"a.jsonl", "b.jsonl"}) {
        writer->begin(file, std::make_shared<Guarded<LogInProgress::Account>>());
        write(1);
    }
    writer->end();
    written().get();
    EXPECT_THAT(writer->problemsOfEarlier(), SizeIs(2));
    disk.setFull(false);
    disk.waitUntil([&] { return disk.told_.size() == 4; });
    written().get();
    EXPECT_THAT(writer->problemsOfEarlier(), IsEmpty());
    EXPECT_THAT(disk.told(), Contains("The log b.jsonl is being written again, and lacks nothing."));
    EXPECT_EQ(disk.writes, (std::vector{sampleLine(1), sampleLine(1)}));
}

TEST_F(RecordingWriterTest, NotAllLogsOfALongDayWaitForADisk) {
    disk.setFull(true);
    for (const char* file : {"a.jsonl", "b.jsonl", "c.jsonl", "d.jsonl", "e.jsonl", "f.jsonl"}) {
        writer->begin(file, std::make_shared<Guarded<LogInProgress::Account>>());
        write(1);
    }
    written().get();
    EXPECT_THAT(writer->problemsOfEarlier(), SizeIs(4));
    EXPECT_THAT(disk.told(), Contains("The log a.jsonl stays as it is: it lacks what was recorded last."));
}

TEST_F(RecordingWriterTest, AtItsEndItTellsWhatIsLost) {
    disk.setFull(true);
    writer->begin("a.jsonl", account);
    write(1);
    writer.reset();
    ASSERT_THAT(disk.told(), SizeIs(2));
    EXPECT_EQ(disk.told()[1], "The log a.jsonl stays as it is: it lacks what was recorded last.");
}

TEST_F(RecordingWriterTest, BehindTheEndNothingIsWritten) {
    write(0);
    writer->begin("a.jsonl", account);
    write(1);
    writer->end();
    write(2);
    written().get();
    EXPECT_EQ(disk.writes, std::vector{sampleLine(1)});
}

TEST_F(RecordingWriterTest, ItsOwnEndWaitsForTheDisk) {
    writer->begin("a.jsonl", account);
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

TEST_F(RecordingWriterTest, ItSaysThatItWaits) {
    writer->begin("a.jsonl", account);
    disk.setHangs(true);
    write(1);
    auto ending = std::async(std::launch::async, [&] { writer.reset(); });
    disk.waitUntil([&] { return !disk.told_.empty(); });
    disk.setHangs(false);
    ending.get();
    EXPECT_THAT(disk.told(),
                ElementsAre("Waiting for the disk to take the recording, for ten seconds at most."));
    EXPECT_EQ(disk.writes, std::vector{sampleLine(1)});
}

TEST_F(RecordingWriterTest, TheDiskIsMadeToKeepALogThatEnds) {
    writer->begin("a.jsonl", account);
    write(1);
    written().get();
    EXPECT_EQ(disk.flushes, 0U); // an hour has not passed
    writer->end();
    disk.waitUntil([&] { return disk.flushes == 1; });
}

TEST_F(RecordingWriterTest, TheDiskIsMadeToKeepWhatWasWrittenThoughNothingFollows) {
    writer.emplace(disk.opener(), disk.teller(), RecordingWriter::Pauses{1ms, 1h, 1h, 1h});
    writer->begin("a.jsonl", account);
    for (std::size_t round = 1; round <= 3; ++round) {
        write(static_cast<double>(round));
        disk.waitUntil([&] { return disk.flushes == round; });
    }
}

/// What waited in the process would go with it.
TEST_F(RecordingWriterTest, LinesAreWrittenWhileTheDiskIsMadeToKeepOthers) {
    writer.emplace(disk.opener(), disk.teller(), RecordingWriter::Pauses{1ms, 1h, 1h, 1h});
    disk.setFlushHangs(true);
    writer->begin("a.jsonl", account);
    write(1);
    disk.waitUntil([&] { return disk.flushes == 1; });
    write(2);
    written().get();
    EXPECT_EQ(disk.writes, (std::vector{sampleLine(1), sampleLine(2)}));
    disk.setFlushHangs(false);
}

TEST_F(RecordingWriterTest, ADiskThatDoesNotAnswerIsToldOnceAndUntilItDoes) {
    writer.emplace(disk.opener(), disk.teller(), RecordingWriter::Pauses{1h, 1h, 1h, 0s});
    writer->begin("a.jsonl", account);
    written().get();
    EXPECT_EQ(writer->hang(), "");
    disk.setHangs(true);
    write(1);
    disk.waitUntil([&] { return disk.begun == 1; });
    const auto problem = writer->hang();
    EXPECT_EQ(
        problem,
        "The log a.jsonl is not being written: the disk does not answer. Look after the disk; the flight "
        "is kept in memory meanwhile, and the log is completed from it.");
    EXPECT_EQ(writer->hang(), problem);
    EXPECT_THAT(disk.told(), ElementsAre(problem));
    disk.setHangs(false);
    disk.waitUntil([&] { return disk.told_.size() == 2; });
    EXPECT_EQ(disk.told()[1], "The log a.jsonl is being written again, and lacks nothing.");
    EXPECT_EQ(writer->hang(), "");
}

TEST_F(RecordingWriterTest, ADiskThatTakesItsTimeDoesNotHang) {
    writer->begin("a.jsonl", account);
    disk.setHangs(true);
    write(1);
    disk.waitUntil([&] { return disk.begun == 1; });
    EXPECT_EQ(writer->hang(), "");
    disk.setHangs(false);
}

TEST_F(RecordingWriterTest, ADiskThatDoesNotKeepWhatItTakesHangsToo) {
    writer.emplace(disk.opener(), disk.teller(), RecordingWriter::Pauses{1ms, 1h, 1h, 0s});
    disk.setFlushHangs(true);
    writer->begin("a.jsonl", account);
    write(1);
    disk.waitUntil([&] { return disk.flushes == 1; });
    EXPECT_THAT(writer->hang(), HasSubstr("the disk does not answer"));
    disk.setFlushHangs(false);
}

/// The recorder that lives on such a disk.
struct SlowDiskTest : testing::Test {
    const test::TemporaryFolder folder;
    HeldDisk disk;
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
