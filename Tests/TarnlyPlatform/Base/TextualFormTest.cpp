#include "TarnlyPlatform/Base/TextualForm.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

TEST(TextualForm, PlainTextIsPutInQuotes) {
    EXPECT_EQ(quoted("sim/time"), "\"sim/time\"");
    EXPECT_EQ(quoted(""), "\"\"");
    EXPECT_EQ(quoted("it's \u00E9"), "\"it's \u00E9\"");
}

TEST(TextualForm, QuotesAndBackslashesAreEscaped) { EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")"); }

TEST(TextualForm, ControlCharactersAreEscaped) {
    EXPECT_EQ(quoted("\n\r\t"), R"("\n\r\t")");
    EXPECT_EQ(quoted(std::string_view("\0", 1)), R"("\0")");
    EXPECT_EQ(quoted("\x01\x1F\x7F"), R"("\u{1}\u{1F}\u{7F}")");
}

TEST(TextualForm, AnErrorIsItsCaseNameAndItsText) {
    EXPECT_EQ(errorText("missingParams", "load_flight requires a path"),
              R"(missingParams("load_flight requires a path"))");
}

TEST(NetworkError, HasTheFormOfTheHouse) {
    const NetworkError error(NetworkError::Case::connectionFailed, "127.0.0.1:8086: Connection refused");
    EXPECT_STREQ(error.what(), R"(connectionFailed("127.0.0.1:8086: Connection refused"))");
    EXPECT_EQ(error.which(), NetworkError::Case::connectionFailed);
}

} // namespace
} // namespace tarnly
