#include "TarnlyCore/Recording/GrowingList.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tarnly {
namespace {

GrowingList<std::string> numbersBelow(int count) {
    GrowingList<std::string> list;
    for (int i = 0; i < count; ++i)
        list.append(std::to_string(i));
    return list;
}

void expectNumbersBelow(std::size_t count, const GrowingList<std::string>::Snapshot& snapshot) {
    ASSERT_EQ(snapshot.size(), count);
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(snapshot[i], std::to_string(i));
}

TEST(GrowingList, BeginsEmpty) { expectNumbersBelow(0, GrowingList<std::string>().snapshot()); }

TEST(GrowingList, KeepsTheOrderAcrossBlocks) {
    for (const int count : {1, 255, 256, 257, 512, 1000}) {
        expectNumbersBelow(static_cast<std::size_t>(count), numbersBelow(count).snapshot());
    }
}

TEST(GrowingList, SnapshotDoesNotGrowWithTheList) {
    auto list = numbersBelow(255);
    const auto snapshot = list.snapshot();
    list.append("255");
    list.append("256");
    expectNumbersBelow(255, snapshot);
    expectNumbersBelow(257, list.snapshot());
}

TEST(GrowingList, SnapshotOutlivesTheList) {
    auto list = numbersBelow(300);
    const auto snapshot = list.snapshot();
    list = {};
    list.append("another");
    expectNumbersBelow(300, snapshot);
}

} // namespace
} // namespace tarnly
