#include "TarnlyClient/Commands/RawRequest.hpp"

#include <gtest/gtest.h>

#include "TarnlyClient/Companion/ClientError.hpp"

namespace tarnly::client {
namespace {

TEST(RawRequest, ARequestWithAnIdGoesAsItIs) {
    const auto request = rawRequest(R"( { "type" : "x",  "req_id" : 77 } )");
    EXPECT_EQ(request.text, R"( { "type" : "x",  "req_id" : 77 } )");
    EXPECT_EQ(request.reqId, 77);
}

TEST(RawRequest, AnIdIsAddedWhereThereIsNone) {
    EXPECT_EQ(rawRequest(R"( {"type":"{x}"})").text, R"( {"req_id":1000,"type":"{x}"})");
    EXPECT_EQ(rawRequest(R"({ "req_id2":1})").text, R"({"req_id":1000, "req_id2":1})");
    EXPECT_EQ(rawRequest("{}").text, R"({"req_id":1000})");
    EXPECT_EQ(rawRequest("{}").reqId, 1000);
}

TEST(RawRequest, AnIdThatIsNoneIsTheCompanionsToRefuse) {
    EXPECT_EQ(rawRequest(R"({"req_id":"7"})").text, R"({"req_id":"7"})");
    EXPECT_EQ(rawRequest(R"({"req_id":"7"})").reqId, std::nullopt);
    EXPECT_EQ(rawRequest(R"({"req_id":null})").reqId, std::nullopt);
}

TEST(RawRequest, WhatIsNoObjectIsWrongUsage) {
    for (const auto* text : {"", "x", "[]", "1", "\"x\"", "{", "{}{}", "null"}) {
        EXPECT_THROW(rawRequest(text), UsageError) << text;
    }
}

} // namespace
} // namespace tarnly::client
