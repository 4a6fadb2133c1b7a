#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlySimulator/Api/CatalogueText.hpp"
#include "TarnlySimulator/StandIn.hpp"
#include "TarnlySimulator/World/Commands.hpp"
#include "TarnlySimulator/World/Datarefs.hpp"

namespace tarnly::simulator {
namespace {

bool isPlain(const std::string& text) {
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c < 0x7F && c != '"' && c != '\\'; });
}

TEST(StockCatalogue, NamesAreUniqueAndPlain) {
    std::set<std::string> names;
    for (const Dataref& dataref : stockDatarefs({.datarefs = 1000})) {
        EXPECT_TRUE(names.insert(dataref.name).second) << dataref.name;
        EXPECT_NE(isPlain(dataref.name), dataref.isAwkward) << dataref.name;
    }
    for (const Command& command : stockCommands(400)) {
        EXPECT_TRUE(names.insert(command.name).second) << command.name;
        EXPECT_TRUE(isPlain(command.name + command.description)) << command.name;
    }
}

TEST(StockCatalogue, ValuesAreOfTheKindThatTheCatalogueNames) {
    auto options = test::standInOptions();
    options.datarefs = 500;
    const World world(options);
    for (const Dataref& dataref : world.datarefs().entries()) {
        const Value value = world.read(dataref);
        EXPECT_EQ(std::holds_alternative<std::vector<double>>(value), isArray(dataref.type)) << dataref.name;
        EXPECT_EQ(std::holds_alternative<std::string>(value), dataref.type == ValueType::data)
            << dataref.name;
    }
}

struct Expected {
    const char* name;
    ValueType type;
    bool isWritable;
};

TEST(StockCatalogue, HasWhatACompanionReadsAndWrites) {
    const World world(test::standInOptions());
    using enum ValueType;
    const Expected all[] = {
        {"sim/flightmodel/position/latitude", real, true},
        {"sim/flightmodel/position/longitude", real, true},
        {"sim/flightmodel/position/elevation", real, true},
        {"sim/flightmodel/misc/h_ind", single, false},
        {"sim/flightmodel/position/y_agl", single, false},
        {"sim/cockpit2/controls/gear_handle_down", integer, true},
        {"sim/flightmodel2/gear/deploy_ratio", singles, false},
        {"sim/cockpit2/engine/actuators/throttle_ratio_all", single, true},
        {"sim/cockpit2/engine/actuators/mixture_ratio_all", single, true},
        {"sim/cockpit2/engine/actuators/prop_ratio_all", single, true},
        {"sim/cockpit2/engine/actuators/throttle_ratio", singles, true},
        {"sim/cockpit2/engine/actuators/mixture_ratio", singles, true},
        {"sim/cockpit2/engine/actuators/prop_ratio", singles, true},
        {"sim/cockpit2/controls/flap_ratio", single, true},
        {"sim/cockpit2/controls/flap_handle_request_ratio", single, true},
        {"sim/flightmodel/position/phi", single, true},
        {"sim/flightmodel/position/theta", single, true},
        {"sim/flightmodel/position/psi", single, true},
        {"sim/flightmodel/position/mag_psi", single, false},
        {"sim/cockpit2/autopilot/servos_on", integer, true},
        {"sim/flightmodel/position/local_vx", single, true},
        {"sim/flightmodel/position/local_vy", single, true},
        {"sim/flightmodel/position/local_vz", single, true},
        {"sim/flightmodel/position/P", single, true},
        {"sim/flightmodel/position/Q", single, true},
        {"sim/flightmodel/position/R", single, true},
        {"sim/time/zulu_time_sec", single, true},
    };
    for (const auto& [name, type, isWritable] : all) {
        const Dataref* dataref = world.datarefs().named(name);
        ASSERT_NE(dataref, nullptr) << name;
        EXPECT_EQ(dataref->type, type) << name;
        EXPECT_EQ(dataref->isWritable, isWritable) << name;
    }
}

TEST(StockCatalogue, TheLeversOfAllEnginesCanBeLists) {
    auto options = test::standInOptions();
    options.leverLists = true;
    const World world(options);
    for (const char* lever : {"throttle_ratio_all", "mixture_ratio_all", "prop_ratio_all"}) {
        const std::string name = std::string("sim/cockpit2/engine/actuators/") + lever;
        EXPECT_EQ(world.datarefs().named(name)->type, ValueType::singles) << name;
        EXPECT_EQ(std::get<std::vector<double>>(test::valueOf(world, name)).size(), 2u) << name;
    }
}

TEST(StockCatalogue, TheFlapLeversOlderNameCanBeMissing) {
    auto options = test::standInOptions();
    options.noFlapRatio = true;
    const World world(options);
    EXPECT_EQ(world.datarefs().named("sim/cockpit2/controls/flap_ratio"), nullptr);
    EXPECT_NE(world.datarefs().named("sim/cockpit2/controls/flap_handle_request_ratio"), nullptr);
}

TEST(StockCatalogue, IsFilledUpToTheSizeAskedFor) {
    EXPECT_GT(stockDatarefs({}).size(), 400u);
    const auto shown = [](std::size_t atLeast) {
        const auto datarefs = stockDatarefs({.datarefs = atLeast});
        return std::ranges::count(datarefs, false, &Dataref::isAwkward);
    };
    EXPECT_EQ(shown(7400), 7400);
    EXPECT_EQ(shown(10), shown(0));
    EXPECT_GT(stockCommands(0).size(), 150u);
    EXPECT_EQ(stockCommands(3170).size(), 3170u);
}

TEST(StockCatalogue, EveryEffectHasItsDataref) {
    const World world(test::standInOptions());
    for (const Command& command : world.commands().entries()) {
        if (command.effect == nullptr || command.effect->kind == CommandEffect::Kind::restartFlight) continue;
        EXPECT_NE(world.datarefs().named(command.effect->dataref), nullptr) << command.name;
    }
}

TEST(Catalogue, IdsArePositiveDistinctAndLong) {
    const World world(test::standInOptions());
    std::set<std::int64_t> ids;
    for (const Dataref& dataref : world.datarefs().entries()) {
        EXPECT_GT(dataref.id, 0);
        EXPECT_TRUE(ids.insert(dataref.id).second);
        EXPECT_EQ(world.datarefs().withId(dataref.id), &dataref);
    }
    EXPECT_GT(*ids.rbegin(), std::int64_t{1} << 60);
}

TEST(CatalogueText, ListsEveryDatarefInOrder) {
    const World world(test::standInOptions());
    CatalogueText text(world);
    const auto json = parseJson(text.datarefs());
    const auto& data = json.at("data").as_array();
    const auto& entries = world.datarefs().entries();
    ASSERT_EQ(data.size(), test::shownDatarefs(world)); // what does not show stands at the end
    for (std::size_t at = 0; at < data.size(); ++at) {
        EXPECT_EQ(data[at].at("id").as_int64(), entries[at].id);
        EXPECT_EQ(data[at].at("name").as_string(), entries[at].name);
        EXPECT_EQ(data[at].at("is_writable").as_bool(), entries[at].isWritable);
        EXPECT_EQ(data[at].at("value_type").as_string(), wireName(entries[at].type));
    }
}

TEST(CatalogueText, FollowsTheQuirksAndTheIds) {
    World world(test::standInOptions());
    CatalogueText text(world);
    const std::string whole = text.datarefs();
    world.quirks.lateDatarefs = true;
    EXPECT_LT(text.datarefs().size(), whole.size());
    EXPECT_EQ(text.datarefs().find("addon/"), std::string::npos);
    world.quirks.mainMenu = true;
    EXPECT_EQ(text.datarefs(), R"({"data":[]})");
    world.quirks.mainMenu = world.quirks.lateDatarefs = false;
    EXPECT_EQ(text.datarefs(), whole);
    world.drawIds(7);
    EXPECT_NE(text.datarefs(), whole);
}

TEST(CatalogueText, IsMadeOnce) {
    const World world(test::standInOptions());
    CatalogueText text(world);
    const char* first = text.datarefs().data();
    EXPECT_EQ(text.datarefs().data(), first);
}

TEST(CatalogueText, AnAwkwardOneHasNamesThatAreNotUtf8AndEntriesThatAreNone) {
    World world(test::standInOptions());
    CatalogueText text(world);
    world.quirks.awkwardCatalogue = true;
    EXPECT_NE(text.datarefs().find("addon/caf\xE9/temperature"), std::string::npos);
    for (const std::string& catalogue : {text.datarefs(), text.commands()}) {
        const auto json = parseJson(wellFormedUtf8(catalogue));
        const auto& data = json.at("data").as_array();
        const auto isProper = [](const boost::json::value& entry) {
            const auto* object = entry.if_object();
            const auto* id = object == nullptr ? nullptr : object->if_contains("id");
            const auto* name = object == nullptr ? nullptr : object->if_contains("name");
            return id != nullptr && id->is_int64() && name != nullptr && name->is_string();
        };
        const auto awkward = std::ranges::count_if(data, [&](const auto& each) { return !isProper(each); });
        EXPECT_EQ(awkward, 12);
        EXPECT_TRUE(data.at(0).is_null());
    }
    world.quirks.mainMenu = true;
    EXPECT_EQ(text.datarefs(), R"({"data":[]})");
}

TEST(CatalogueText, CommandsMayHaveNullAmongThem) {
    World world(test::standInOptions());
    CatalogueText text(world);
    const auto plain = parseJson(text.commands());
    ASSERT_EQ(plain.at("data").as_array().size(), world.commands().entries().size());
    EXPECT_EQ(plain.at("data").at(0).at("description").as_string(), "Landing lights toggle.");
    world.quirks.nullEntries = true;
    const auto json = parseJson(text.commands());
    const auto& withNulls = json.at("data").as_array();
    const auto nulls = std::ranges::count_if(withNulls, [](const auto& entry) { return entry.is_null(); });
    EXPECT_GE(nulls, 10);
    EXPECT_EQ(withNulls.size() - static_cast<std::size_t>(nulls), world.commands().entries().size());
}

} // namespace
} // namespace tarnly::simulator
