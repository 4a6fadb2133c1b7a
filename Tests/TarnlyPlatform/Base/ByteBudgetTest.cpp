#include "TarnlyPlatform/Base/ByteBudget.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarnly {
namespace {

using Lease = ByteBudget::Lease;

/// Takers by name, with what they were granted.
class Takers {
  public:
    explicit Takers(ByteBudget& budget) : budget_(budget) {}

    void take(const std::string& name, std::size_t bytes) {
        budget_.take(bytes, [this, name](Lease lease) {
            order.push_back(name);
            leases_.insert_or_assign(name, std::move(lease));
        });
    }
    void letGo(const std::string& name) { const auto lease = leases_.extract(name); }

    std::vector<std::string> order;

  private:
    ByteBudget& budget_;
    std::map<std::string, Lease> leases_;
};

using Names = std::vector<std::string>;

TEST(ByteBudget, GrantsAtOnceWhatHasRoom) {
    ByteBudget budget(100);
    const auto first = budget.tryTake(60);
    const auto second = budget.tryTake(40);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->bytes(), 60u);
    EXPECT_EQ(budget.taken(), 100u);
    EXPECT_FALSE(budget.tryTake(1));
}

TEST(ByteBudget, HasTheRoomAgainThatALeaseGivesBack) {
    ByteBudget budget(100);
    std::optional<Lease> first = budget.tryTake(60);
    EXPECT_FALSE(budget.tryTake(60));
    first.reset();
    EXPECT_EQ(budget.taken(), 0u);
    EXPECT_TRUE(budget.tryTake(60));
}

TEST(ByteBudget, GrantsInTheOrderOfAsking) {
    ByteBudget budget(100);
    Takers takers(budget);
    takers.take("first", 80);
    takers.take("large", 90);
    takers.take("small", 10); // has room, but is not the next
    EXPECT_FALSE(budget.tryTake(10));
    EXPECT_EQ(takers.order, Names{"first"});
    EXPECT_EQ(budget.waiting(), 2u);
    takers.letGo("first");
    EXPECT_EQ(takers.order, (Names{"first", "large", "small"}));
    EXPECT_EQ(budget.waiting(), 0u);
    EXPECT_EQ(budget.taken(), 100u);
}

TEST(ByteBudget, GrantsMoreThanThereIsToOneAlone) {
    ByteBudget budget(100);
    Takers takers(budget);
    takers.take("small", 1);
    takers.take("huge", 1000);
    EXPECT_EQ(takers.order, Names{"small"});
    takers.letGo("small");
    EXPECT_EQ(takers.order, (Names{"small", "huge"}));
    takers.take("next", 1);
    EXPECT_EQ(budget.waiting(), 1u);
    takers.letGo("huge");
    EXPECT_EQ(takers.order, (Names{"small", "huge", "next"}));
    EXPECT_EQ(budget.taken(), 1u);
}

TEST(ByteBudget, GoesOnToTheNextWhenOneLetsGoAtOnce) {
    ByteBudget budget(100);
    auto all = budget.tryTake(100);
    constexpr int many = 100'000; // one inside the other would not fit the stack
    int granted = 0;
    for (int i = 0; i < many; ++i)
        budget.take(100, [&](const Lease&) { ++granted; });
    all.reset();
    EXPECT_EQ(granted, many);
    EXPECT_EQ(budget.taken(), 0u);
}

TEST(ByteBudget, LetsATakerTakeAgainWhenItIsGranted) {
    ByteBudget budget(100);
    Takers takers(budget);
    auto all = budget.tryTake(100);
    budget.take(50, [&](const Lease&) { takers.take("again", 50); });
    takers.take("other", 60);
    all.reset();
    EXPECT_EQ(takers.order, (Names{"other"})); // who came in between is first
    takers.letGo("other");
    EXPECT_EQ(takers.order, (Names{"other", "again"}));
}

TEST(ByteBudget, MovesALeaseWithItsBytes) {
    ByteBudget budget(100);
    Lease kept;
    {
        auto lease = budget.tryTake(70);
        ASSERT_TRUE(lease);
        kept = std::move(*lease);
    }
    EXPECT_EQ(budget.taken(), 70u);
    kept = Lease();
    EXPECT_EQ(budget.taken(), 0u);
}

TEST(ByteBudget, IsOutlivedByItsLeases) {
    std::optional<Lease> kept;
    int granted = 0;
    {
        ByteBudget budget(100);
        kept = budget.tryTake(70);
        budget.take(70, [&](const Lease&) { ++granted; });
    }
    kept.reset();
    EXPECT_EQ(granted, 0);
}

} // namespace
} // namespace tarnly
