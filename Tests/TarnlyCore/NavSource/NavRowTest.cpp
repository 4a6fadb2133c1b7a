#include "TarnlyCore/NavSource/NavRow.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using Kind = NavRow::Kind;

Kind kindOf(NavFileKind file, std::string_view line) { return parseNavRow(file, line).kind; }

TEST(NavHeader, HasVersionCycleAndBuild) {
    EXPECT_EQ(
        parseNavHeader("1200 Version - data cycle 2501, build 20250115, metadata FixXP1101. Invented.\r"),
        (NavHeader{1200, "2501", "20250115"}));
    EXPECT_EQ(parseNavHeader("1101 Version"), (NavHeader{1101, "", ""})) << "made by hand";
    EXPECT_EQ(parseNavHeader("1150 Version - data cycle 25, build soon"), (NavHeader{1150, "", ""}));
    EXPECT_EQ(parseNavHeader("I"), std::nullopt);
    EXPECT_EQ(parseNavHeader(" 52.100000000 9.2 TARNA ENRT ED"), std::nullopt);
}

TEST(NavRow, AFixHasItsPlaceAndItsNames) {
    const auto row =
        parseNavRow(NavFileKind::fixes, " 52.100000000    9.200000000  TARNA ENRT ED 2105431 TARNA NORTH\r");
    ASSERT_EQ(row.kind, Kind::entry);
    EXPECT_EQ(row.entry, (NavEntry{NavKind::fix, "TARNA", "ENRT", "ED", "TARNA NORTH", {52.1, 9.2}}));
    EXPECT_TRUE(row.entry.isEnRoute());
}

TEST(NavRow, AFixNeedsNeitherTypeNorName) {
    const auto row = parseNavRow(NavFileKind::fixes, "-50\t+8.5 mypt1 enrt zz");
    ASSERT_EQ(row.kind, Kind::entry);
    EXPECT_EQ(row.entry, (NavEntry{NavKind::fix, "MYPT1", "ENRT", "ZZ", "", {-50, 8.5}}));
    EXPECT_EQ(kindOf(NavFileKind::fixes, "50 8 MYPT1 ENRT"), Kind::unreadable);
}

TEST(NavRow, NavaidsAreThoseThatPeopleFlyTo) {
    const auto row =
        parseNavRow(NavFileKind::navaids,
                    " 3  52.2  9.3      610    11430   130      2.500  TRN  ENRT ED TARNLY VOR/DME");
    ASSERT_EQ(row.kind, Kind::entry);
    EXPECT_EQ(row.entry, (NavEntry{NavKind::vor, "TRN", "ENRT", "ED", "TARNLY VOR/DME", {52.2, 9.3}}));
    const std::string rest = " 52.3 9.1 250 357 50 0.0 TAN ENRT ED TANDORF NDB";
    EXPECT_EQ(parseNavRow(NavFileKind::navaids, "2" + rest).entry.kind, NavKind::ndb);
    EXPECT_EQ(parseNavRow(NavFileKind::navaids, "13" + rest).entry.kind, NavKind::dme);
    for (const char* code : {"4", "5", "6", "7", "8", "9", "12", "14", "15", "16"})
        EXPECT_EQ(kindOf(NavFileKind::navaids, code + rest), Kind::nothing) << code;
    for (const char* code : {"1", "10", "11", "17", "-2", "x", "2.0"})
        EXPECT_EQ(kindOf(NavFileKind::navaids, code + rest), Kind::unreadable) << code;
    EXPECT_EQ(kindOf(NavFileKind::navaids, "2 52.3 9.1 250 357 50 0.0 TAN ENRT"), Kind::unreadable);
}

TEST(NavRow, AnAirportNeedsItsFirstFiveFields) {
    const auto row = parseNavRow(NavFileKind::airports,
                                 "ZZTA ED  52.401000000    9.415000000   190 C  7900 I  5000    -1");
    ASSERT_EQ(row.kind, Kind::entry);
    EXPECT_EQ(row.entry, (NavEntry{NavKind::airport, "ZZTA", "", "ED", "", {52.401, 9.415}}));
    EXPECT_EQ(kindOf(NavFileKind::airports, "ZZTA ED 52.4 9.4 190"), Kind::entry);
    EXPECT_EQ(kindOf(NavFileKind::airports, "ZZTA ED 52.4 9.4"), Kind::unreadable);
}

TEST(NavRow, WhatIsOffTheGlobeCannotBeRead) {
    for (const char* place :
         {"90.1 0", "-91 0", "0 180.5", "0 -181", "nan 0", "0 inf", "1e400 0", "5,5 0", "N 0"})
        EXPECT_EQ(kindOf(NavFileKind::fixes, std::string(place) + " A ENRT ED"), Kind::unreadable) << place;
    for (const char* place : {"90 180", "-90 -180", "+1 +2", "0 0"})
        EXPECT_EQ(kindOf(NavFileKind::fixes, std::string(place) + " A ENRT ED"), Kind::entry) << place;
}

TEST(NavRow, BlankLinesAndCommentsAreNothingAnd99IsTheEnd) {
    for (const auto kind : {NavFileKind::fixes, NavFileKind::navaids, NavFileKind::airports}) {
        for (const char* line : {"", "\r", " \t ", "# 99", "#99"})
            EXPECT_EQ(kindOf(kind, line), Kind::nothing) << line;
        for (const char* line : {"99", " 99 ", "99\r"})
            EXPECT_EQ(kindOf(kind, line), Kind::end) << line;
    }
    EXPECT_EQ(kindOf(NavFileKind::fixes, "99 9.2 TARNA ENRT ED"), Kind::unreadable);
}

TEST(NavRow, NamesInOtherEncodingsAreRepaired) {
    const auto row = parseNavRow(NavFileKind::fixes, "1 2 TARNA ENRT ED 0 K\xD6LN\x07");
    EXPECT_EQ(row.entry.name, "K\xEF\xBF\xBDLN?");
    EXPECT_EQ(kindOf(NavFileKind::fixes, "1 2 " + std::string(100, 'A') + " ENRT ED"), Kind::unreadable);
}

} // namespace
} // namespace tarnly
