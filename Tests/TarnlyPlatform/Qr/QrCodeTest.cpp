#include "TarnlyPlatform/Qr/QrCode.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tarnly {
namespace {

/// The modules as rows of "#" and ".".
std::string drawing(const QrCode& code) {
    std::string rows;
    for (int y = 0; y < code.size(); ++y) {
        for (int x = 0; x < code.size(); ++x)
            rows += code.isDark(x, y) ? '#' : '.';
        rows += '\n';
    }
    return rows;
}

std::string drawing(const std::string& text) {
    const auto code = QrCode::of(text);
    return code ? drawing(*code) : "";
}

/// A finder is a dark square of three by three in a light ring in a dark ring; beyond it is light.
bool hasFinder(const QrCode& code, int centreX, int centreY) {
    for (int y = -4; y <= 4; ++y) {
        for (int x = -4; x <= 4; ++x) {
            const int ring = std::max(std::abs(x), std::abs(y));
            if (code.isDark(centreX + x, centreY + y) != (ring != 2 && ring != 4)) return false;
        }
    }
    return true;
}

/// The two bits beside the upper left finder that tell the level; the format masks them by 10.
std::string correctionLevel(const QrCode& code) {
    const bool high = !code.isDark(0, 8);
    const bool low = code.isDark(1, 8);
    return std::string(high ? "1" : "0") + (low ? "1" : "0");
}

TEST(QrCode, HasFindersInThreeCorners) {
    const auto code = QrCode::of("ws://192.168.1.20:41234");
    ASSERT_TRUE(code);
    EXPECT_TRUE(hasFinder(*code, 3, 3)) << drawing(*code);
    EXPECT_TRUE(hasFinder(*code, code->size() - 4, 3)) << drawing(*code);
    EXPECT_TRUE(hasFinder(*code, 3, code->size() - 4)) << drawing(*code);
    EXPECT_FALSE(hasFinder(*code, code->size() - 4, code->size() - 4)) << drawing(*code);
}

TEST(QrCode, HasCorrectionLevelM) {
    const auto code = QrCode::of("ws://192.168.1.20:41234");
    ASSERT_TRUE(code);
    EXPECT_EQ(correctionLevel(*code), "00") << drawing(*code);
}

TEST(QrCode, IsAsLargeAsItsTextNeeds) {
    // The largest texts in bytes of the versions 1, 2, 3 and 40 at level M.
    constexpr std::array<std::pair<std::size_t, int>, 4> capacities{
        {{14, 21}, {26, 25}, {42, 29}, {2331, 177}}};
    for (const auto& [bytes, size] : capacities) {
        const auto code = QrCode::of(std::string(bytes, 'a'));
        ASSERT_TRUE(code) << bytes;
        EXPECT_EQ(code->size(), size) << bytes;
    }
    EXPECT_EQ(QrCode::of(std::string(15, 'a'))->size(), 25);
}

TEST(QrCode, DigitsAreBytesToo) { EXPECT_EQ(QrCode::of(std::string(15, '1'))->size(), 25); }

TEST(QrCode, IsAbsentForAnEmptyTextAndOneThatDoesNotFit) {
    EXPECT_FALSE(QrCode::of(""));
    EXPECT_FALSE(QrCode::of(std::string(2332, 'a')));
}

TEST(QrCode, EveryByteCounts) {
    EXPECT_EQ(drawing("ws://10.0.0.1:1"), drawing("ws://10.0.0.1:1"));
    EXPECT_NE(drawing("ws://10.0.0.1:1"), drawing("ws://10.0.0.1:2"));
    EXPECT_NE(drawing(std::string("a\0b", 3)), drawing(std::string("a\0c", 3)));
}

TEST(QrCode, IsLightAllAround) {
    const auto code = QrCode::of("a");
    ASSERT_TRUE(code);
    EXPECT_TRUE(code->isDark(0, 0));
    EXPECT_TRUE(code->isDark(code->size() - 1, 0));
    for (const int outside : {-1, code->size(), 1000}) {
        EXPECT_FALSE(code->isDark(outside, 0));
        EXPECT_FALSE(code->isDark(0, outside));
    }
}

/// What a terminal shows of a line, two rows of "#" and ".".
std::array<std::string, 2> rowsOf(const std::string& line) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> shown{
        {{" ", ".."}, {"▀", "#."}, {"▄", ".#"}, {"█", "##"}}};
    std::array<std::string, 2> rows;
    std::string_view rest = line;
    while (!rest.empty()) {
        const auto found =
            std::ranges::find_if(shown, [&](const auto& known) { return rest.starts_with(known.first); });
        if (found == shown.end()) return {"?", "?"};
        rows[0] += found->second[0];
        rows[1] += found->second[1];
        rest.remove_prefix(found->first.size());
    }
    return rows;
}

TEST(QrCode, ATerminalShowsItBlackOnWhiteWithItsQuietZone) {
    const auto code = QrCode::of("http://192.168.1.20:41234/");
    ASSERT_TRUE(code);
    const std::string before = "\x1b[30;107m";
    const std::string after = "\x1b[0m";
    std::vector<std::string> rows;
    for (const auto& line : terminalLines(*code)) {
        ASSERT_TRUE(line.starts_with(before) && line.ends_with(after));
        for (auto& row : rowsOf(line.substr(before.size(), line.size() - before.size() - after.size())))
            rows.push_back(std::move(row));
    }
    const int width = code->size() + 2 * QrCode::quietZone;
    ASSERT_EQ(static_cast<int>(rows.size()), width + 1); // the last line has a row to spare
    for (int y = 0; y <= width; ++y) {
        std::string expected;
        for (int x = 0; x < width; ++x)
            expected += code->isDark(x - QrCode::quietZone, y - QrCode::quietZone) ? '#' : '.';
        EXPECT_EQ(rows[static_cast<std::size_t>(y)], expected) << y;
    }
}

} // namespace
} // namespace tarnly
