#include "TarnlyClient/Companion/CompanionFinder.hpp"

#include <gtest/gtest.h>

#include "TarnlyClient/Companion/ClientError.hpp"

namespace tarnly::client {
namespace {

const FoundService rig{"rig", "rig.local", "192.0.2.1", 4711, {}};
const FoundService attic{"attic", "attic.local", "2001:db8::1", 4712, {}};

std::string complaint(const std::vector<FoundService>& found,
                      const std::optional<std::string>& instance = {}) {
    try {
        chooseCompanion(found, instance);
        return "";
    } catch (const ClientError& error) {
        return error.what();
    }
}

TEST(CompanionFinder, TheOnlyOneIsTaken) {
    EXPECT_EQ(chooseCompanion({rig}, {}), (CompanionPlace{"rig", {"192.0.2.1", 4711}}));
}

TEST(CompanionFinder, OfSeveralTheNamedOneIsTaken) {
    EXPECT_EQ(chooseCompanion({attic, rig}, "rig"), (CompanionPlace{"rig", {"192.0.2.1", 4711}}));
    EXPECT_EQ(chooseCompanion({attic, rig}, "attic"), (CompanionPlace{"attic", {"2001:db8::1", 4712}}));
}

TEST(CompanionFinder, NamesThatLookTheSameAreTheSame) {
    auto cafe = rig;
    cafe.name = "Cafe\xCC\x81";
    EXPECT_EQ(chooseCompanion({cafe}, "Caf\xC3\xA9"), (CompanionPlace{cafe.name, {"192.0.2.1", 4711}}));
}

TEST(CompanionFinder, SeveralAreListed) {
    EXPECT_EQ(complaint({attic, rig}),
              "several companions are there; choose one with --instance NAME:"
              "\n  attic  [2001:db8::1]:4712\n  rig  192.0.2.1:4711");
}

TEST(CompanionFinder, AnUnknownNameListsThoseThatAreThere) {
    EXPECT_EQ(complaint({rig}, "Rig"),
              "no companion is named \"Rig\"; these are there:\n  rig  192.0.2.1:4711");
}

TEST(CompanionFinder, WithoutAnyThereIsAdvice) {
    const auto* advice =
        "no companion found: is it running on this network? Otherwise where it is can be told with "
        "--host HOST --port PORT";
    EXPECT_EQ(complaint({}), advice);
    EXPECT_EQ(complaint({}, "rig"), advice);
}

TEST(CompanionFinder, AGivenAddressIsNotLookedFor) {
    CompanionSearch search;
    search.host = "example.org";
    search.port = 80;
    EXPECT_EQ(locateCompanion(search), (CompanionPlace{std::nullopt, {"example.org", 80}}));
}

} // namespace
} // namespace tarnly::client
