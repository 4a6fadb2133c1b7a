#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <gtest/gtest.h>

namespace tarnly {
namespace {

using Entries = std::vector<CatalogueEntry>;

TEST(Catalogue, EntriesComeInTheirOrderAndOtherKeysAreIgnored) {
    const auto entries = parseCatalogue(R"({"data":[
        {"id":40003472032,"is_writable":true,"name":"sim/b","value_type":"float"},
        {"name":"sim/a","id":-7}],"count":2})");
    EXPECT_EQ(entries, (Entries{{40003472032, "sim/b"}, {-7, "sim/a"}}));
}

TEST(Catalogue, MayBeEmpty) { EXPECT_EQ(parseCatalogue(R"({"data":[]})"), Entries{}); }

TEST(Catalogue, EntriesThatAreNoObjectsArePassedOver) {
    const auto entries = parseCatalogue(R"({"data":[null,{"id":1,"name":"a"},3,"x",[],true]})");
    EXPECT_EQ(entries, (Entries{{1, "a"}}));
}

TEST(Catalogue, IdsAreIntegersOf64Bits) {
    const auto entries =
        parseCatalogue(R"({"data":[{"id":9223372036854775807,"name":"a"},{"id":7.0,"name":"b"}]})");
    EXPECT_EQ(entries, (Entries{{INT64_MAX, "a"}, {7, "b"}}));
}

TEST(Catalogue, EntriesWithoutAProperIdOrNameArePassedOver) {
    for (const auto* entry :
         {R"({"id":1})", R"({"name":"a"})", R"({"id":"1","name":"a"})", R"({"id":1,"name":2})",
          R"({"id":1.5,"name":"a"})", R"({"id":null,"name":"a"})", R"({"id":true,"name":"a"})",
          R"({"id":9223372036854775808,"name":"a"})", R"({"id":1,"name":null})"}) {
        const auto body = R"({"data":[{"id":5,"name":"b"},)" + std::string(entry) + "]}";
        EXPECT_EQ(parseCatalogue(body), (Entries{{5, "b"}})) << entry;
    }
}

TEST(Catalogue, MalformedBytesCountAsReplacementCharacters) {
    const auto entries =
        parseCatalogue("{\"data\":[{\"id\":1,\"name\":\"a\xff\"},{\"id\":2,\"name\":\"b\"}]}");
    EXPECT_EQ(entries, (Entries{{1, "a\xEF\xBF\xBD"}, {2, "b"}}));
}

TEST(Catalogue, OtherBodiesFail) {
    for (const auto* body : {"", "null", "[]", "{}", R"({"data":null})", R"({"data":{}})",
                             R"({"error_code":"x"})", "<html></html>", R"({"data":[]} trailing)"}) {
        EXPECT_THROW(parseCatalogue(body), JsonError) << body;
    }
}

TEST(Catalogue, OfEntriesWithTheSameNameTheLastCounts) {
    const auto ids = idsByName({{1, "a"}, {2, "b"}, {3, "a"}});
    EXPECT_EQ(ids, (IdsByName{{"a", 3}, {"b", 2}}));
}

} // namespace
} // namespace tarnly
