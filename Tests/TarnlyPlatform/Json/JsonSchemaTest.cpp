#include "TarnlyPlatform/Json/JsonSchema.hpp"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

namespace tarnly {
/// With linkage, as the counting of a record's members needs for those that are optional.
namespace schema_test {

struct Leg {
    std::string to;
    std::optional<double> feet;

    static constexpr auto fields() { return std::tuple(field("to", &Leg::to), field("feet", &Leg::feet)); }
};

struct Route {
    std::vector<Leg> legs;
    std::optional<Leg> alternate;
    std::map<std::string, bool> notes;
    std::int64_t number = 0;

    static constexpr auto fields() {
        return std::tuple(field("legs", &Route::legs), field("alternate", &Route::alternate),
                          field("notes", &Route::notes), field("number", &Route::number, 1));
    }
};

/// Written as a colour's name.
struct Colour {
    void writeJson(JsonWriter& writer) const { writer.string("red"); }
    static Colour readJson(const boost::json::value&) { return {}; }
};

} // namespace schema_test
namespace {

using schema_test::Colour;

boost::json::value parsed(std::string_view text) { return boost::json::parse(text); }

} // namespace

template <>
struct CustomJsonSchema<Colour> {
    static boost::json::object schema() { return {{"enum", boost::json::array{"red", "green"}}}; }
};

namespace {

TEST(JsonSchema, saysTheKindsOfSimpleValues) {
    JsonSchema schema;
    EXPECT_EQ(schema.of<bool>(JsonSchema::Use::written), parsed(R"({"type":"boolean"})"));
    EXPECT_EQ(schema.of<std::int64_t>(JsonSchema::Use::written), parsed(R"({"type":"integer"})"));
    EXPECT_EQ(schema.of<double>(JsonSchema::Use::written), parsed(R"({"type":"number"})"));
    EXPECT_EQ(schema.of<std::string>(JsonSchema::Use::written), parsed(R"({"type":"string"})"));
    EXPECT_EQ(schema.of<Colour>(JsonSchema::Use::written), parsed(R"({"enum":["red","green"]})"));
    EXPECT_TRUE(schema.definitions().empty());
}

TEST(JsonSchema, definesEachRecordOnceByItsName) {
    JsonSchema schema;
    EXPECT_EQ(schema.of<schema_test::Route>(JsonSchema::Use::written), parsed(R"({"$ref":"#/$defs/Route"})"));
    EXPECT_EQ(boost::json::value(schema.definitions()), parsed(R"({
        "Leg":{"type":"object","properties":{"to":{"type":"string"},"feet":{"type":"number"}},
               "required":["to"]},
        "Route":{"type":"object","properties":{
            "legs":{"type":"array","items":{"$ref":"#/$defs/Leg"}},
            "alternate":{"$ref":"#/$defs/Leg"},
            "notes":{"type":"object","additionalProperties":{"type":"boolean"}},
            "number":{"type":"integer"}},
            "required":["legs","notes","number"]}})"));
}

TEST(JsonSchema, takesNullForAbsentWhereRecordsAreRead) {
    JsonSchema schema;
    schema.of<schema_test::Route>(JsonSchema::Use::read);
    const auto& leg = schema.definitions().at("Leg").at("properties");
    EXPECT_EQ(leg.at("feet"), parsed(R"({"type":["number","null"]})"));
    const auto& route = schema.definitions().at("Route").at("properties");
    EXPECT_EQ(route.at("alternate"), parsed(R"({"anyOf":[{"$ref":"#/$defs/Leg"},{"type":"null"}]})"));
}

TEST(JsonSchema, needsNoFieldWithADefaultWhereRecordsAreRead) {
    JsonSchema schema;
    schema.of<schema_test::Route>(JsonSchema::Use::read);
    EXPECT_EQ(schema.definitions().at("Route").at("required"), parsed(R"(["legs","notes"])"));
}

} // namespace
} // namespace tarnly
