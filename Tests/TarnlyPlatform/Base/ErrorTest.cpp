#include "TarnlyPlatform/Base/Error.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Net/NetworkError.hpp"

namespace tarnly {
namespace {

TEST(Error, PlainTextIsPutInQuotes) {
    EXPECT_EQ(quoted("sim/time"), "\"sim/time\"");
    EXPECT_EQ(quoted(""), "\"\"");
    EXPECT_EQ(quoted("it's \u00E9"), "\"it's \u00E9\"");
}

TEST(Error, QuotesAndBackslashesAreEscaped) { EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")"); }

TEST(Error, ControlCharactersAreEscaped) {
    EXPECT_EQ(quoted("\n\r\t"), R"("\n\r\t")");
    EXPECT_EQ(quoted(std::string_view("\0", 1)), R"("\0")");
    EXPECT_EQ(quoted("\x01\x1F\x7F"), R"("\u{1}\u{1F}\u{7F}")");
}

struct AnyCases {
    enum class Case { missingParams, alreadyStarted, openFailed };
    static constexpr std::array<std::string_view, 3> names{"missingParams", "alreadyStarted", "openFailed"};
};
using AnyError = Error<AnyCases>;

TEST(Error, IsItsCaseNameAndItsText) {
    const AnyError error(AnyError::Case::missingParams, "load_flight requires a path");
    EXPECT_STREQ(error.what(), R"(missingParams("load_flight requires a path"))");
    EXPECT_EQ(error.which(), AnyError::Case::missingParams);
    EXPECT_EQ(error.payload(), "load_flight requires a path");
}

TEST(Error, AnEmptyTextStandsInQuotesToo) {
    EXPECT_STREQ(AnyError(AnyError::Case::missingParams, "").what(), R"(missingParams(""))");
}

TEST(Error, ACaseThatSaysAllHasNoParentheses) {
    EXPECT_STREQ(AnyError(AnyError::Case::alreadyStarted).what(), "alreadyStarted");
}

TEST(Error, SeveralTextsHaveTheirLabels) {
    const AnyError error(AnyError::Case::openFailed, {{"path", "nav.db"}, {"message", "unable\nto open"}});
    EXPECT_STREQ(error.what(), R"(openFailed(path: "nav.db", message: "unable\nto open"))");
}

TEST(Error, IsEqualByCaseAndText) {
    const AnyError error(AnyError::Case::missingParams, "a");
    EXPECT_EQ(error, AnyError(AnyError::Case::missingParams, "a"));
    EXPECT_NE(error, AnyError(AnyError::Case::missingParams, "b"));
    EXPECT_NE(error, AnyError(AnyError::Case::openFailed, "a"));
}

TEST(NetworkError, HasTheFormOfTheHouse) {
    const NetworkError error(NetworkError::Case::connectionFailed, "127.0.0.1:8086: Connection refused");
    EXPECT_STREQ(error.what(), R"(connectionFailed("127.0.0.1:8086: Connection refused"))");
    EXPECT_EQ(error.which(), NetworkError::Case::connectionFailed);
}

} // namespace
} // namespace tarnly
