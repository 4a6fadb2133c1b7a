#include "TarnlyXPlane/Link/WebApiMessages.hpp"

#include <gtest/gtest.h>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

std::string withMessage(const std::string& message) {
    return R"({"error_code":"x","error_message":")" + message + "\"}";
}

TEST(WebApiResult, HasItsRequestsNumberAndItsOutcome) {
    EXPECT_EQ(parseWebApiMessage(R"({"req_id":1,"type":"result","success":true})").result,
              (WebApiResult{1, true}));
    const auto refused = parseWebApiMessage(
        R"({"req_id":9007199254740993,"type":"result","success":false,
            "error_code":"invalid_dataref_id","error_message":"no such dataref"})");
    EXPECT_EQ(refused.result, (WebApiResult{9007199254740993, false}));
    EXPECT_TRUE(refused.update.values.empty());
}

TEST(WebApiResult, OtherTextsAreNone) {
    for (const auto* text :
         {"", "no JSON", "[]", "null", R"("result")", R"({"type":"result"})",
          R"({"type":"result","req_id":1})", R"({"type":"result","success":true})",
          R"({"type":"result","req_id":"1","success":true})",
          R"({"type":"result","req_id":1.5,"success":true})",
          R"({"type":"result","req_id":null,"success":true})", R"({"type":"result","req_id":1,"success":1})",
          R"({"type":"result","req_id":1,"success":null})", R"({"type":1,"req_id":1,"success":true})",
          R"({"req_id":1,"success":true})", R"({"type":"Result","req_id":1,"success":true})",
          R"({"type":"dataref_update_values","req_id":1,"success":true})"}) {
        EXPECT_EQ(parseWebApiMessage(text).result, std::nullopt) << text;
    }
}

TEST(WebApiResult, BringsNoValues) {
    const auto message = parseWebApiMessage(R"({"type":"result","req_id":1,"success":true,"data":{"12":5}})");
    EXPECT_TRUE(message.result);
    EXPECT_TRUE(message.update.values.empty());
}

TEST(DatarefUpdateTest, KnowsWhetherItBringsAnyOfSomeIds) {
    const auto update =
        parseDatarefUpdate(R"({"type":"dataref_update_values","data":{"1":5,"2":[1],"3":null}})");
    const auto hasAny = [&](std::vector<std::int64_t> ids) { return update.hasAny(ids); };
    EXPECT_TRUE(hasAny({9, 1}));
    EXPECT_TRUE(hasAny({2}));
    EXPECT_FALSE(hasAny({3})) << "no value";
    EXPECT_FALSE(hasAny({9}));
    EXPECT_FALSE(hasAny({}));
}

TEST(ErrorMessage, IsTheSimulatorsOwn) {
    EXPECT_EQ(errorMessageOf(withMessage("Incoming traffic is disabled")), "Incoming traffic is disabled");
}

TEST(ErrorMessage, IsEmptyWhereThereIsNone) {
    for (const auto* body :
         {"", "<html>403</html>", "null", "[]", "{}", "{\"error_message\":", R"({"error_message":null})",
          R"({"error_message":7})", R"({"error_message":["off"]})", R"({"error_message":""})",
          R"({"error_message":" . "})", R"({"error_code":"disabled"})", R"(["error_message"])"}) {
        EXPECT_EQ(errorMessageOf(body), "") << body;
    }
}

TEST(ErrorMessage, IsOneLineWithoutAFullStop) {
    EXPECT_EQ(errorMessageOf(withMessage(R"(Traffic\nis\r\n\toff. . )")), "Traffic is   off");
}

TEST(ErrorMessage, MalformedBytesCountAsReplacementCharacters) {
    EXPECT_EQ(errorMessageOf(withMessage("off\xff")), "off\xEF\xBF\xBD");
}

TEST(ErrorMessage, LongOneIsCut) {
    EXPECT_EQ(errorMessageOf(withMessage(std::string(200, 'a'))), std::string(200, 'a'));
    EXPECT_EQ(errorMessageOf(withMessage(std::string(201, 'a'))), std::string(200, 'a') + "…");
}

TEST(ErrorMessage, IsCutBetweenCharacters) {
    std::string text(199, 'a');
    for (int i = 0; i < 10; ++i)
        text += "ü";
    EXPECT_EQ(errorMessageOf(withMessage(text)), std::string(199, 'a') + "…");
    const auto shown = errorMessageOf(withMessage(text.substr(1)));
    EXPECT_EQ(shown, std::string(198, 'a') + "ü…");
    EXPECT_EQ(wellFormedUtf8(shown), shown);
}

TEST(SimulatorVersion, StandsInTheCapabilities) {
    EXPECT_EQ(simulatorVersionIn(R"({"api":{"versions":["v1","v2"]},"x-plane":{"version":"12.4.0"}})"),
              "12.4.0");
}

TEST(SimulatorVersion, IsAbsentWhereItIsNotTold) {
    for (const auto* body :
         {"", "<html></html>", "null", "[]", "{}", R"({"x-plane":null})", R"({"x-plane":"12.4.0"})",
          R"({"x-plane":{}})", R"({"x-plane":{"version":12}})", R"({"x-plane":{"version":""}})"}) {
        EXPECT_EQ(simulatorVersionIn(body), std::nullopt) << body;
    }
}

TEST(ValueIn, IsTheNumberOfTheResponse) {
    EXPECT_EQ(valueIn(R"({"data":47.5})"), 47.5);
    EXPECT_EQ(valueIn(R"({"data":-3})"), -3);
    EXPECT_EQ(valueIn(R"({"data":true})"), 1);
    for (const auto* body : {"", "null", "{}", "47.5", R"({"data":null})", R"({"data":[1]})",
                             R"({"data":"1"})", R"({"data":1e+9999})", R"({"data":{"data":1}})"}) {
        EXPECT_EQ(valueIn(body), std::nullopt) << body;
    }
}

TEST(CountIn, IsAnIntegerOnly) {
    EXPECT_EQ(countIn(R"({"data":7396})"), 7396);
    EXPECT_EQ(countIn(R"({"data":0})"), 0);
    for (const auto* body : {"", "null", "{}", "0", R"({"data":null})", R"({"data":0.5})", R"({"data":"0"})",
                             R"({"data":[]})", R"({"data":false})"}) {
        EXPECT_EQ(countIn(body), std::nullopt) << body;
    }
}

} // namespace
} // namespace tarnly
