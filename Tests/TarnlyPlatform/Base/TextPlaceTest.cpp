#include "TarnlyPlatform/Base/TextPlace.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(TextPlaces, LinesAndColumnsCountFromOne) {
    TextPlaces places("ab\n\nc");
    EXPECT_EQ(places.at(0), (TextPlace{1, 1}));
    EXPECT_EQ(places.at(1), (TextPlace{1, 2}));
    EXPECT_EQ(places.at(1), (TextPlace{1, 2}));
    EXPECT_EQ(places.at(2), (TextPlace{1, 3}));
    EXPECT_EQ(places.at(3), (TextPlace{2, 1}));
    EXPECT_EQ(places.at(4), (TextPlace{3, 1}));
    EXPECT_EQ(places.at(5), (TextPlace{3, 2}));
    EXPECT_EQ(places.at(900), (TextPlace{3, 2}));
}

TEST(TextPlaces, AColumnIsACharacterAndNoByte) {
    TextPlaces places("\u00E4\u20AC\U0001F6EBx");
    EXPECT_EQ(places.at(2), (TextPlace{1, 2}));
    EXPECT_EQ(places.at(5), (TextPlace{1, 3}));
    EXPECT_EQ(places.at(9), (TextPlace{1, 4}));
}

TEST(TextPlaces, AnEmptyTextHasOnePlace) {
    TextPlaces places("");
    EXPECT_EQ(places.at(3), (TextPlace{1, 1}));
}

} // namespace
} // namespace tarnly
