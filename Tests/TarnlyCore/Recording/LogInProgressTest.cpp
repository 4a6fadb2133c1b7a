#include "TarnlyCore/Recording/LogInProgress.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <map>
#include <random>
#include <vector>

#include "Support/FullDisk.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"
#include "TarnlyCore/Recording/SampleList.hpp"

namespace tarnly {
namespace {

using namespace std::chrono_literals;
using test::lineText;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// A disk in memory that fails as it is told to.
struct FailingDisk {
    struct Content {
        std::string text;
        /// As a power cut, or a failed flush, leaves it.
        std::string safe;
    };
    std::map<std::string, std::shared_ptr<Content>> files;
    /// How many bytes a file may have.
    std::size_t room = std::string::npos;
    std::optional<std::errc> openFails;
    std::optional<std::errc> flushFails;
    /// On a thread of its own.
    std::function<std::error_code()> lateFlush;
    std::size_t writes = 0;
    std::vector<MissingFolder> opened;

    class Sink final : public LogSink {
      public:
        Sink(FailingDisk& disk, std::string name)
            : disk_(disk), name_(std::move(name)), content_(disk.files.at(name_)) {}

        std::error_code write(std::size_t place, std::string_view text) override {
            ++disk_.writes;
            auto& all = content_->text;
            EXPECT_LE(place, all.size()) << "a hole";
            const auto taken = std::min(text.size(), disk_.room - std::min(place, disk_.room));
            if (all.size() < place + taken) all.resize(place + taken);
            std::ranges::copy(text.substr(0, taken), all.begin() + static_cast<std::ptrdiff_t>(place));
            return taken == text.size() ? std::error_code() : make_error_code(std::errc::no_space_on_device);
        }
        std::error_code flush() override {
            if (disk_.lateFlush) return disk_.lateFlush();
            if (disk_.flushFails) {
                content_->text = content_->safe;
                return make_error_code(*disk_.flushFails);
            }
            content_->safe = content_->text;
            return {};
        }
        bool isInPlace(std::size_t size) const override {
            const auto found = disk_.files.find(name_);
            return found != disk_.files.end() && found->second == content_ && content_->text.size() >= size;
        }

      private:
        FailingDisk& disk_;
        const std::string name_;
        const std::shared_ptr<Content> content_;
    };

    OpenedLog open(const std::filesystem::path& file, MissingFolder missing) {
        opened.push_back(missing);
        if (openFails) return {nullptr, file, make_error_code(*openFails)};
        files[file.string()] = std::make_shared<Content>();
        return {std::make_unique<Sink>(*this, file.string()), file, {}};
    }

    std::string content() { return files.contains("/r/a.jsonl") ? files["/r/a.jsonl"]->text : "none"; }
};

class LogInProgressTest : public testing::Test {
  protected:
    void add(const std::vector<std::string>& ids = {}) {
        const auto time = static_cast<double>(count++);
        expected += lineText(LogLine::of(test::sampleAt(time)));
        for (const auto& id : ids)
            expected += lineText(LogLine::of(test::firedAt(time, id)));
        log->add({samples.append(test::sampleAt(time)), test::firing(time, ids)});
    }
    void addAndWrite() {
        add();
        log->write(now);
    }

    FailingDisk disk;
    SampleList samples;
    std::size_t count = 0;
    /// What the log has to hold in the end.
    std::string expected;
    std::vector<std::string> told;
    LogInProgress::TimePoint now{1h};
    LogInProgress::SharedAccount account = std::make_shared<Guarded<LogInProgress::Account>>();
    std::optional<LogInProgress> log{
        std::in_place,
        [this](const std::filesystem::path& file, MissingFolder missing) { return disk.open(file, missing); },
        "/r/a.jsonl",
        account,
        LogInProgress::Pauses{5s, 1s},
        [this](const std::string& words) { told.push_back(words); },
        std::launch::deferred};
};

TEST_F(LogInProgressTest, OnADiskThatIsWellNothingIsTold) {
    log->write(now);
    EXPECT_EQ(account->copy().file, "/r/a.jsonl");
    EXPECT_EQ(log->due(), now + 2s);
    add({"x", "y"});
    add();
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
    EXPECT_EQ(disk.writes, 1U);
    EXPECT_EQ(log->due(), now + 2s);
    log->end();
    EXPECT_FALSE(log->isWhole());
    log->flushWhenDue(now);
    EXPECT_TRUE(log->isWhole());
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(LogInProgressTest, AFullDiskIsToldOnceAndTheLogIsCompletedWhenThereIsRoom) {
    disk.room = 10;
    addAndWrite();
    EXPECT_EQ(disk.content(), expected.substr(0, 10));
    EXPECT_THAT(
        log->problem().text(),
        AllOf(StartsWith("The log a.jsonl is not being written: there is no room in /r (No space left"),
              HasSubstr("Free some space there; the flight is kept in memory")));
    for (int i = 0; i < 5; ++i, now += 1s)
        addAndWrite();
    disk.room = 60; // for some of it
    addAndWrite();
    disk.room = std::string::npos;
    now += 1s;
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
    EXPECT_EQ(log->problem(), "");
    EXPECT_THAT(told, ElementsAre(StartsWith("The log a.jsonl is not being written: "),
                                  "The log a.jsonl is being written again, and lacks nothing."));
}

TEST_F(LogInProgressTest, ADiskThatRefusesIsTriedOnceASecond) {
    disk.room = 0;
    addAndWrite();
    for (int i = 0; i < 100; ++i, now += 10ms)
        addAndWrite();
    EXPECT_EQ(disk.writes, 1U);
    EXPECT_EQ(log->due(), now);
    addAndWrite();
    EXPECT_EQ(disk.writes, 2U);
    log->write(now, LogInProgress::Patience::none);
    EXPECT_EQ(disk.writes, 3U);
}

TEST_F(LogInProgressTest, WhatAFailedFlushTakesBackIsWrittenAgain) {
    addAndWrite();
    now += 5s;
    log->flushWhenDue(now);
    addAndWrite();
    disk.flushFails = std::errc::io_error;
    now += 5s;
    log->flushWhenDue(now);
    EXPECT_THAT(log->problem(), HasSubstr("/r/a.jsonl: Input/output error. Look after the disk"));
    now += 1s;
    addAndWrite();
    EXPECT_THAT(told, SizeIs(1)) << "a disk that takes a write and does not keep it is not well";
    disk.flushFails.reset();
    now += 1s;
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
    EXPECT_EQ(log->problem(), "");
}

TEST_F(LogInProgressTest, AFileThatHasGoneIsNoticedThoughNothingIsToBeWritten) {
    addAndWrite();
    now += 1s;
    log->write(now);
    EXPECT_EQ(log->due(), now + 1s);
    disk.files.clear();
    log->write(now);
    EXPECT_EQ(log->problem(), "") << "it is looked for now and then only";
    now += 1s;
    log->write(now);
    EXPECT_THAT(log->problem(), HasSubstr("there is no folder /r"));
    now += 1s;
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
}

TEST_F(LogInProgressTest, AFileWithoutALineIsLookedForToo) {
    log->write(now);
    disk.files.clear();
    now += 2s;
    log->write(now);
    EXPECT_THAT(log->problem(), HasSubstr("there is no folder /r"));
}

/// The system tells once of what it could not keep: a flush that succeeds behind one that fails proves
/// nothing.
TEST_F(LogInProgressTest, WhatALateFlushFailsOnIsWrittenAgain) {
    std::promise<std::error_code> answer;
    bool isAsked = false;
    disk.lateFlush = [&] {
        isAsked = true;
        return answer.get_future().get();
    };
    log.emplace(
        [this](const std::filesystem::path& file, MissingFolder missing) { return disk.open(file, missing); },
        "/r/a.jsonl", account, LogInProgress::Pauses{5s, 1s},
        [this](const std::string& words) { told.push_back(words); });
    addAndWrite();
    now += 5s;
    log->flushWhenDue(now);
    addAndWrite();
    EXPECT_EQ(disk.content(), expected) << "what comes meanwhile is written";
    log->flushWhenDue(now);
    disk.files["/r/a.jsonl"]->text.clear(); // as the disk has lost it
    answer.set_value(make_error_code(std::errc::io_error));
    log->end();
    log->flushWhenDue(now);
    EXPECT_TRUE(isAsked);
    EXPECT_THAT(log->problem(), HasSubstr("/r/a.jsonl: Input/output error. Look after the disk"));
    EXPECT_FALSE(log->isWhole());
    disk.lateFlush = nullptr;
    now += 1s;
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
    EXPECT_TRUE(log->isWhole());
}

/// Nobody tells when a flush is done, and nothing may come that would have it looked at.
TEST_F(LogInProgressTest, WhatComesDuringAFlushDoesNotWaitForTheNextLook) {
    std::promise<std::error_code> answer;
    disk.lateFlush = [done = answer.get_future().share()] { return done.get(); };
    log.emplace(
        [this](const std::filesystem::path& file, MissingFolder missing) { return disk.open(file, missing); },
        "/r/a.jsonl", account, LogInProgress::Pauses{5s, 1s, 1h},
        [this](const std::string& words) { told.push_back(words); });
    addAndWrite();
    now += 5s;
    log->flushWhenDue(now);
    addAndWrite();
    log->flushWhenDue(now);
    EXPECT_EQ(log->due(), now + 5s);
    answer.set_value({});
    log->end();
    log->flushWhenDue(now);
    EXPECT_TRUE(log->isWhole());
}

TEST_F(LogInProgressTest, AFileThatHasGoneIsMadeAnewFromTheBeginning) {
    for (int i = 0; i < 3; ++i)
        addAndWrite();
    disk.files.clear();
    addAndWrite();
    EXPECT_NE(log->problem(), "");
    EXPECT_EQ(account->copy().file, "");
    now += 1s;
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
    EXPECT_EQ(log->problem(), "");
    EXPECT_EQ(account->copy().file, "/r/a.jsonl");
    EXPECT_THAT(disk.opened, ElementsAre(MissingFolder::make, MissingFolder::leave));
}

TEST_F(LogInProgressTest, AFileThatWasCutShortIsMadeAnew) {
    for (int i = 0; i < 3; ++i)
        addAndWrite();
    disk.files["/r/a.jsonl"]->text.resize(expected.size() - 1);
    addAndWrite();
    EXPECT_THAT(log->problem(), HasSubstr("there is no folder /r"));
    now += 1s;
    log->write(now);
    EXPECT_EQ(disk.content(), expected);
}

TEST_F(LogInProgressTest, EachReasonHasItsCure) {
    const std::map<std::errc, std::string> cures{
        {std::errc::no_such_file_or_directory,
         "there is no folder /r. Make it again, as the next recording does;"},
        {std::errc::not_a_directory, "there is no folder /r. Make it again, as the next recording does;"},
        {std::errc::permission_denied, "/r may not be written to (Permission denied). Make it writable;"},
        {std::errc::read_only_file_system,
         "/r may not be written to (Read-only file system). Make it writable;"},
        {std::errc::file_too_large, "there is no room in /r (File too large). Free some space there;"},
        {std::errc::too_many_files_open, "/r/a.jsonl: Too many open files. Look after the disk;"}};
    for (const auto& [reason, cure] : cures) {
        disk.openFails = reason;
        log->write(now, LogInProgress::Patience::none);
        EXPECT_THAT(log->problem(), HasSubstr("is not being written: " + cure));
        EXPECT_EQ(told.back(), log->problem());
    }
    EXPECT_EQ(account->copy().file, "");
    add();
    disk.openFails.reset();
    log->write(now, LogInProgress::Patience::none);
    EXPECT_EQ(disk.content(), expected);
    EXPECT_EQ(log->problem(), "");
}

TEST_F(LogInProgressTest, OfALogThatIsGivenUpItIsSaidThatItLacksSomething) {
    addAndWrite();
    log->giveUp();
    EXPECT_THAT(told, IsEmpty());
    disk.room = 0;
    addAndWrite();
    log->giveUp();
    EXPECT_EQ(told.back(), "The log a.jsonl stays as it is: it lacks what was recorded last.");
}

/// Whatever a disk does: when it is well again, the log has every line once, whole and in order.
class AnyDisk : public LogInProgressTest {
  protected:
    bool oneIn(unsigned number) { return chance() % number == 0; }

    void somethingHappens() {
        if (oneIn(4)) disk.room = oneIn(2) ? std::string::npos : disk.content().size() + chance() % 200;
        if (oneIn(6)) disk.openFails = oneIn(2) ? std::optional(std::errc::permission_denied) : std::nullopt;
        if (oneIn(6)) disk.flushFails = oneIn(2) ? std::optional(std::errc::io_error) : std::nullopt;
        if (oneIn(20)) disk.files.clear();
        if (oneIn(30) && disk.files.contains("/r/a.jsonl")) disk.files["/r/a.jsonl"]->text.clear();
        now += std::chrono::milliseconds(chance() % 2000);
    }

    void getWell() {
        disk.room = std::string::npos;
        disk.openFails.reset();
        disk.flushFails.reset();
    }

    /// As the recorder thread does it.
    void turn() {
        log->write(now);
        log->flushWhenDue(now);
    }

    std::mt19937 chance;
};

TEST_F(AnyDisk, LosesNoLineInTheEnd) {
    std::size_t troubles = 0;
    for (unsigned seed = 0; seed < 50; ++seed) {
        chance.seed(seed);
        disk = FailingDisk();
        samples = SampleList();
        expected.clear();
        told.clear();
        count = 0;
        account = std::make_shared<Guarded<LogInProgress::Account>>();
        log.emplace([this](const std::filesystem::path& file,
                           MissingFolder missing) { return disk.open(file, missing); },
                    "/r/a.jsonl", account, LogInProgress::Pauses{5s, 1s},
                    [this](const std::string& words) { told.push_back(words); }, std::launch::deferred);
        for (unsigned step = 0; step < 60; ++step) {
            somethingHappens();
            add(std::vector<std::string>(chance() % 3, "x"));
            turn();
        }
        getWell();
        add();
        log->end();
        for (int i = 0; i < 3 && !log->isWhole(); ++i, now += 1s)
            turn();
        ASSERT_TRUE(log->isWhole()) << seed;
        ASSERT_EQ(disk.content(), expected) << seed;
        ASSERT_EQ(log->problem(), "") << seed;
        troubles += told.size() / 2;
    }
    EXPECT_GT(troubles, 100U) << "the disks were too well";
}

TEST(LogInProgress, OnARealDiskATornLineIsMadeWhole) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "a.jsonl";
    const auto account = std::make_shared<Guarded<LogInProgress::Account>>();
    LogInProgress log(RecordingLog::open, file, account, {5s, 1s}, [](const std::string&) {});
    SampleList samples;
    std::string expected;
    LogInProgress::TimePoint now{1h};
    for (const std::size_t room : {90U, 200U, 100'000U}) {
        const test::FullDisk full(room);
        expected += lineText(LogLine::of(test::sampleAt(static_cast<double>(room))));
        log.add({samples.append(test::sampleAt(static_cast<double>(room))), {}});
        log.write(now += 1s);
        EXPECT_EQ(test::contentOf(file), expected.substr(0, room));
        EXPECT_EQ(log.problem().empty(), expected.size() <= room);
    }
}

} // namespace
} // namespace tarnly
