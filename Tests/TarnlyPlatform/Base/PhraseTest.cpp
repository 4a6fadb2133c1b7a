#include "TarnlyPlatform/Base/Phrase.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonPhrase.hpp"

namespace tarnly {
namespace {

/// Says everything backwards, as it were: the arguments in another order, and with numbers of its own.
class Other : public Phrase::Language {
  public:
    std::string translated(std::string_view pattern) const override {
        if (pattern == "from %1 to %2") return "nach %2 von %1";
        if (pattern == "starts") return "über";
        return "<" + std::string(pattern) + ">";
    }
    std::string translated(std::string_view one, std::string_view many, std::int64_t count) const override {
        return "<" + std::string(count < 3 ? one : many) + ">";
    }
    std::string number(double) const override { return "real"; }
    std::string number(std::int64_t) const override { return "whole"; }
};

TEST(Phrase, IsEnglishWithItsArguments) {
    EXPECT_EQ(Phrase::of("Starting…").text(), "Starting…");
    EXPECT_EQ(Phrase::of("from %1 to %2", "here", std::string("there")), "from here to there");
    EXPECT_EQ(Phrase::of("%1 s ago, %2 times", 0.4, 1200), "0.4 s ago, 1200 times");
    EXPECT_EQ(Phrase::of("%2 %1 %1 %3 100 %", "a", "b"), "b a a %3 100 %");
}

TEST(Phrase, WhatStandsInAnArgumentIsNoPlace) {
    EXPECT_EQ(Phrase::of("%1 and %2", "%2 %n", "b"), "%2 %n and b");
    EXPECT_EQ(Phrase::counted("%n of %1", "%n of %1", 2, "%n"), "2 of %n");
}

TEST(Phrase, CountsByItsForms) {
    const auto clients = [](std::int64_t count) {
        return Phrase::counted("%n clients", "%n client", count).text();
    };
    EXPECT_EQ(clients(0), "0 clients");
    EXPECT_EQ(clients(1), "1 client");
    EXPECT_EQ(clients(2), "2 clients");
}

TEST(Phrase, IsSaidInAnotherLanguageWithAllThatIsInIt) {
    const auto road = Phrase::of("from %1 to %2", Phrase::of("home"), Phrase::verbatim("X"));
    EXPECT_EQ(road.in(Other()), "nach X von <home>");
    EXPECT_EQ(Phrase::counted("%n and %1", "%n or %1", 2, 0.5).in(Other()), "<whole or real>");
    EXPECT_EQ(Phrase::joined({road, Phrase(), road}).in(Other()), "nach X von <home> nach X von <home>");
}

TEST(Phrase, ASentenceHasACapitalOfItsLanguageAndAFullStop) {
    const auto sentence = Phrase::sentence(Phrase::of("starts"));
    EXPECT_EQ(sentence, "Starts.");
    EXPECT_EQ(sentence.in(Other()), "Über.");
    EXPECT_TRUE(Phrase::sentence({}).empty());
}

TEST(Phrase, MaySayNothing) {
    EXPECT_TRUE(Phrase().empty());
    EXPECT_TRUE(Phrase::verbatim("").empty());
    EXPECT_TRUE(Phrase::joined({Phrase(), Phrase()}).empty());
    EXPECT_EQ(Phrase().text(), "");
    EXPECT_FALSE(Phrase::of("x").empty());
}

TEST(Phrase, WhatOthersWroteIsMadeWellFormed) {
    EXPECT_EQ(Phrase::of("in %1", "/\xFF"), "in /\xEF\xBF\xBD");
    EXPECT_EQ(Phrase::verbatim("/\xFF"), "/\xEF\xBF\xBD");
}

TEST(Phrase, EqualsWhatSaysTheSame) {
    EXPECT_EQ(Phrase::of("a %1", "b"), Phrase::verbatim("a b"));
    EXPECT_FALSE(Phrase::of("a") == Phrase::of("b"));
}

TEST(Phrase, IsItsEnglishInJson) {
    const auto phrase = Phrase::counted("%n \"clients\"", "%n client", 2);
    EXPECT_EQ(encodeJson(phrase), R"("2 \"clients\"")");
    EXPECT_EQ(decodeJson<Phrase>(parseJson(encodeJson(phrase))), phrase);
    EXPECT_THROW(decodeJson<Phrase>(parseJson("7")), JsonError);
}

} // namespace
} // namespace tarnly
