#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

TEST(Catalogue, HasTheIdsByNameAndOtherKeysAreIgnored) {
    const auto ids = parseCatalogue(R"({"data":[
        {"id":40003472032,"is_writable":true,"name":"sim/b","value_type":"float"},
        {"name":"sim/a","id":-7}],"count":2})");
    EXPECT_EQ(ids, (IdsByName{{"sim/b", 40003472032}, {"sim/a", -7}}));
}

TEST(Catalogue, MayBeEmpty) { EXPECT_EQ(parseCatalogue(R"({"data":[]})"), IdsByName{}); }

TEST(Catalogue, EntriesThatAreNoObjectsArePassedOver) {
    const auto ids = parseCatalogue(R"({"data":[null,{"id":1,"name":"a"},3,"x",[],true]})");
    EXPECT_EQ(ids, (IdsByName{{"a", 1}}));
}

TEST(Catalogue, IdsAreIntegersOf64Bits) {
    const auto ids =
        parseCatalogue(R"({"data":[{"id":9223372036854775807,"name":"a"},{"id":7.0,"name":"b"}]})");
    EXPECT_EQ(ids, (IdsByName{{"a", INT64_MAX}, {"b", 7}}));
}

TEST(Catalogue, EntriesWithoutAProperIdOrNameArePassedOver) {
    for (const auto* entry :
         {R"({"id":1})", R"({"name":"a"})", R"({"id":"1","name":"a"})", R"({"id":1,"name":2})",
          R"({"id":1.5,"name":"a"})", R"({"id":null,"name":"a"})", R"({"id":true,"name":"a"})",
          R"({"id":9223372036854775808,"name":"a"})", R"({"id":1,"name":null})"}) {
        const auto body = R"({"data":[{"id":5,"name":"b"},)" + std::string(entry) + "]}";
        EXPECT_EQ(parseCatalogue(body), (IdsByName{{"b", 5}})) << entry;
    }
}

TEST(Catalogue, MalformedBytesCountAsReplacementCharacters) {
    const auto ids = parseCatalogue("{\"data\":[{\"id\":1,\"name\":\"a\xff\"},{\"id\":2,\"name\":\"b\"}]}");
    EXPECT_EQ(ids, (IdsByName{{"a\xEF\xBF\xBD", 1}, {"b", 2}}));
}

TEST(Catalogue, ANumberBeyondAllRangesSpoilsItsOwnEntryOnly) {
    const auto ids = parseCatalogue(
        R"({"data":[{"id":1e+9999,"name":"a"},{"id":2,"name":"b","x":1e+9999}],"y":[-1e+9999]})");
    EXPECT_EQ(ids, (IdsByName{{"b", 2}}));
}

TEST(Catalogue, OfSeveralListsTheLastCounts) {
    const auto ids =
        parseCatalogue(R"({"data":[{"id":1,"name":"a"}],"data":[{"id":2,"name":"b"}],"other":[{"id":3}]})");
    EXPECT_EQ(ids, (IdsByName{{"b", 2}}));
    EXPECT_THROW(parseCatalogue(R"({"data":[{"id":1,"name":"a"}],"data":3})"), JsonError);
}

TEST(Catalogue, OtherBodiesFail) {
    for (const auto* body : {"", "null", "[]", "{}", R"({"data":null})", R"({"data":{}})",
                             R"({"error_code":"x"})", "<html></html>", R"({"data":[]} trailing)"}) {
        EXPECT_THROW(parseCatalogue(body), JsonError) << body;
    }
}

TEST(Catalogue, OfEntriesWithTheSameNameTheLastCounts) {
    const auto ids =
        parseCatalogue(R"({"data":[{"id":1,"name":"a"},{"id":2,"name":"b"},{"id":3,"name":"a"}]})");
    EXPECT_EQ(ids, (IdsByName{{"a", 3}, {"b", 2}}));
}

} // namespace
} // namespace tarnly
