#include "TarnlyCore/ScriptFixes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/SimulatorFiles.hpp"
#include "TarnlyCore/NavSource/NavBuild.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Its hands are turned by who is asked whether the script is wanted.
struct HandClock final : Clock {
    TimePoint now() const override { return TimePoint(passed); }
    Task<> sleepFor(Duration) override { co_return; }

    Duration passed{0};
};

class ScriptFixesTest : public testing::Test {
  protected:
    std::shared_ptr<NavDatabase> made() const {
        const auto file = files.folder.path() / "nav.db";
        buildNavDatabase(findNavSources(files.folder.path()), file, {}, [] { return true; });
        return std::make_shared<NavDatabase>(file.string());
    }

    std::optional<Coordinate> find(const std::string& ident) {
        const auto make =
            fixesIn(present, clock, isStopping, [&](const auto& text) { told.push_back(text); });
        return make([this] {
            onQuestion();
            return true;
        })(ident);
    }

    void expect(bool isExpected) const {
        present->with([&](auto& inUse) { inUse.isAnotherExpected = isExpected; });
    }

    const test::SimulatorFiles files;
    HandClock clock;
    const std::shared_ptr<Guarded<NavDatabaseInUse>> present = std::make_shared<Guarded<NavDatabaseInUse>>();
    const std::shared_ptr<std::atomic<bool>> isStopping = std::make_shared<std::atomic<bool>>(false);
    std::vector<std::string> told;
    std::function<void()> onQuestion = [] {};
};

TEST_F(ScriptFixesTest, WithoutADatabaseNothingIsFoundAtOnce) {
    onQuestion = [] { ADD_FAILURE() << "there is nothing to wait for"; };
    EXPECT_EQ(find("TARNA"), std::nullopt);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(ScriptFixesTest, ADatabaseThatIsAboutToComeIsWaitedFor) {
    expect(true);
    onQuestion = [&, asked = 0]() mutable {
        if (++asked == 3) present->with([&](auto& inUse) { inUse.database = made(); });
    };
    EXPECT_EQ(find("TARNA"), (Coordinate{52.1, 9.2}));
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(ScriptFixesTest, OneThatDoesNotComeAfterAllIsNotWaitedFor) {
    expect(true);
    onQuestion = [&] { expect(false); };
    EXPECT_EQ(find("TARNA"), std::nullopt);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(ScriptFixesTest, OneThatIsLateIsToldOf) {
    expect(true);
    onQuestion = [&] { clock.passed += std::chrono::milliseconds(500); };
    EXPECT_EQ(find("TARNA"), std::nullopt);
    EXPECT_EQ(clock.passed, NavDatabase::lookupLimit + std::chrono::milliseconds(500));
    EXPECT_THAT(told, ElementsAre(HasSubstr("Load it again")));
}

TEST_F(ScriptFixesTest, TheHostsEndEndsTheWait) {
    expect(true);
    onQuestion = [&] { *isStopping = true; };
    EXPECT_EQ(find("TARNA"), std::nullopt);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(ScriptFixesTest, WhileAnotherIsMadeTheOneBeforeServes) {
    expect(true);
    present->with([&](auto& inUse) { inUse.database = made(); });
    EXPECT_EQ(find("TRN"), (Coordinate{52.2, 9.3}));
}

} // namespace
} // namespace tarnly
