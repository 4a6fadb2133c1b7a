#include "TarnlyCore/NavSource/NavText.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string header = "I\n1200 Version - data cycle 2501, build 20250115, metadata X.\n\n";

struct Reading {
    std::vector<std::string> idents{};
    std::optional<NavHeader> header{};
    std::size_t unreadable = 0;
    std::size_t firstUnreadableLine = 0;

    bool operator==(const Reading&) const = default;
};

Reading read(std::string_view text, std::size_t pieceSize = 1'000'000) {
    Reading reading;
    NavText file(NavFileKind::fixes, [&](const NavEntry& entry) { reading.idents.push_back(entry.ident); });
    for (; !text.empty(); text.remove_prefix(std::min(pieceSize, text.size())))
        file.feed(text.substr(0, pieceSize));
    file.finish();
    reading.header = file.header();
    reading.unreadable = file.unreadable();
    reading.firstUnreadableLine = file.firstUnreadableLine();
    EXPECT_EQ(file.entries(), reading.idents.size());
    EXPECT_TRUE(file.isOver());
    return reading;
}

TEST(NavText, EndsWithItsLastRowOrWithoutOne) {
    EXPECT_THAT(read(header + "1 2 A ENRT ED\n99\n1 2 B ENRT ED\n").idents, ElementsAre("A"));
    EXPECT_THAT(read(header + "1 2 A ENRT ED\n1 2 B ENRT ED").idents, ElementsAre("A", "B"));
    EXPECT_THAT(read(header).idents, IsEmpty());
}

TEST(NavText, CountsRowsThatCannotBeReadAndGoesOn) {
    const auto reading = read(header + "# a comment\n1 2 A ENRT ED\n1 2\nrubbish\n1 3 B ENRT ED\n99\n");
    EXPECT_THAT(reading.idents, ElementsAre("A", "B"));
    EXPECT_EQ(reading.unreadable, 2U);
    EXPECT_EQ(reading.firstUnreadableLine, 6U);
}

TEST(NavText, ALineThatIsTooLongIsOneThatCannotBeRead) {
    const auto reading =
        read(header + std::string(100'000, 'x') + "\n1 2 A ENRT ED\n" + std::string(9000, ' '), 1000);
    EXPECT_THAT(reading.idents, ElementsAre("A"));
    EXPECT_EQ(reading.unreadable, 2U);
}

TEST(NavText, AHeaderIsTheFirstOrTheSecondLine) {
    EXPECT_EQ(read("A\r\n1100 Version\r\n").header->version, 1100);
    EXPECT_EQ(read("\xEF\xBB\xBFI\n1200 Version\n").header->version, 1200);
    EXPECT_EQ(read("1101 Version - data cycle 2406\n1 2 A ENRT ED\n"),
              (Reading{{"A"}, NavHeader{1101, "2406", ""}}));
    EXPECT_EQ(read("\xEF\xBB\xBF"
                   "1200 Version\n")
                  .header->version,
              1200);
}

TEST(NavText, WithoutAHeaderNothingIsRead) {
    EXPECT_EQ(read("I\nnavigation data\n1200 Version\n1 2 A ENRT ED\n"), Reading());
    EXPECT_EQ(read(""), Reading());
    EXPECT_EQ(read("PK\x03\x04"), Reading());
}

TEST(NavText, ReadsTheSameInWhateverPiecesItComes) {
    const auto text =
        header + " 52.1 9.2 TARNA ENRT ED 2105431 TARNA\r\n\r\n1 2\n# x\n-33 18 CF090 ZZTA FA\n99\n1";
    const auto whole = read(text);
    EXPECT_THAT(whole.idents, ElementsAre("TARNA", "CF090"));
    for (std::size_t size = 1; size < text.size(); ++size)
        EXPECT_EQ(read(text, size), whole) << size;
}

} // namespace
} // namespace tarnly
