#include "TarnlyPlatform/Base/Text.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using namespace std::string_view_literals;

TEST(Text, CanonicallyEquivalentTextsAreEqual) {
    EXPECT_TRUE(canonicallyEqual("caf\u00E9", "cafe\u0301"));
    EXPECT_TRUE(canonicallyEqual("\u212B", "\u00C5")); // Angstrom sign and A with ring
    EXPECT_TRUE(canonicallyEqual("", ""));
}

TEST(Text, CaseAndCompatibilityFormsDiffer) {
    EXPECT_FALSE(canonicallyEqual("Secret", "secret"));
    EXPECT_FALSE(canonicallyEqual("\uFB01", "fi")); // the ligature is equivalent by compatibility only
    EXPECT_FALSE(canonicallyEqual("a", ""));
    EXPECT_FALSE(canonicallyEqual(std::string_view("a\0b", 3), "a"));
}

TEST(Text, LengthsThatDifferTooMuchAreNotEqual) {
    std::string accents = "a";
    for (int i = 0; i < 100000; ++i) {
        accents += "\u0301\u0316"; // putting these in order takes quadratic time
    }
    EXPECT_FALSE(canonicallyEqual(accents, "a"));
    EXPECT_FALSE(canonicallyEqual("a", accents));
    EXPECT_TRUE(canonicallyEqual("\u1FEF\u1FEF", "``"));           // three bytes and one
    EXPECT_TRUE(canonicallyEqual("\u0390", "\u03B9\u0308\u0301")); // two bytes and six
}

TEST(Text, UpperCasingFollowsFullUnicodeRules) {
    EXPECT_EQ(upperCased("ksfo 12"), "KSFO 12");
    EXPECT_EQ(upperCased("stra\u00DFe"), "STRASSE");
    EXPECT_EQ(upperCased("i"), "I");
    EXPECT_EQ(upperCased(""), "");
}

TEST(Text, WellFormedBytesStayAsTheyAre) {
    const std::string text("plain, \u00E9, \U0001F6E9, \0 and more"sv);
    EXPECT_EQ(wellFormedUtf8(text), text);
}

TEST(Text, MalformedBytesAreFoundAtEachPlace) {
    for (std::size_t before = 0; before < 20; ++before) {
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string head(before, 'a');
            const std::string tail(after, '~');
            EXPECT_TRUE(isWellFormedUtf8(head + "\U0001F6E9" + tail));
            EXPECT_FALSE(isWellFormedUtf8(head + "\xF0\x9F\x9B" + tail));
            EXPECT_FALSE(isWellFormedUtf8(head + "\u00E9" + tail + "\xE9"));
            EXPECT_EQ(wellFormedUtf8(head + "\x80" + tail), head + "\uFFFD" + tail);
        }
    }
}

TEST(Text, EachMaximalPartOfAnIllFormedSequenceBecomesOneReplacement) {
    EXPECT_EQ(wellFormedUtf8("a\xFFz"), "a\uFFFDz");
    EXPECT_EQ(wellFormedUtf8("\xC3"), "\uFFFD");
    // The example of the Unicode Standard, table 3-8: truncated sequences.
    EXPECT_EQ(wellFormedUtf8("\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64"),
              "a\uFFFD\uFFFD\uFFFDb\uFFFDc\uFFFD\uFFFDd");
    // Surrogates and overlong forms have no valid beginning: each byte counts.
    EXPECT_EQ(wellFormedUtf8("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(wellFormedUtf8("\xC0\xAF"), "\uFFFD\uFFFD");
}

TEST(Printable, ControlCharactersDoNotReachTheTerminal) {
    EXPECT_EQ(printable("\x1B[31mred\x07\n\x7F"), "?[31mred???");
    EXPECT_EQ(printable("\xC2\x9B"
                        "31m\xC2\xA0"),
              "?31m\xC2\xA0");
    EXPECT_EQ(printable("Gr\xC3\xBCn \xE2\x9C\x88"), "Gr\xC3\xBCn \xE2\x9C\x88");
    EXPECT_EQ(printable("\xC2"), "\xEF\xBF\xBD");
    EXPECT_EQ(printable(""), "");
}

} // namespace
} // namespace tarnly
