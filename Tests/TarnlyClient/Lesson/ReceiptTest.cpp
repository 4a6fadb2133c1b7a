#include "TarnlyClient/Lesson/Receipt.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "TarnlyClient/Lesson/Flying.hpp"
#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"

namespace tarnly::client {
namespace {

using test::fired;
using test::sample;

track::Trial fly(const track::FlightLog& log) {
    const FixResolver nowhere = [](const std::string&) { return std::nullopt; };
    return track::tryScript(ScriptTriggerMapper::toEngine(test::script(), nowhere), log, nowhere);
}

std::vector<track::Tolerance> bank() {
    track::Tolerance tolerance;
    tolerance.id = "bank";
    tolerance.name = "Bank";
    tolerance.kind = "bank_not_exceeded";
    tolerance.bankDegrees = 30;
    return {tolerance};
}

Receipt receiptFor(const LessonFlight& flight, const std::vector<std::string>& files) {
    auto receipt = receiptOf(flight, fly, bank(), files);
    receipt.lesson = "Circuit";
    receipt.end = "a key was pressed";
    return receipt;
}

LessonFlight flown() {
    LessonFlight flight(test::script(), std::nullopt);
    flight.take(sample(0));
    flight.take(fired("welcome", 0));
    for (double time = 0.5; time <= 10; time += 0.5)
        flight.take(sample(time, time * 0.0004, 900 - 30 * time));
    flight.take(sample(30, 0.01, 600));
    return flight;
}

TEST(ReceiptTest, ItSaysWhatWasFlownAndWhatWasNot) {
    EXPECT_EQ(receiptText(receiptFor(flown(), {"/r/session-a.jsonl"})),
              "Circuit: a key was pressed\n"
              "  samples    22 over 0:30\n"
              "  gaps       1, 0:20 in all\n"
              "  frozen     none\n"
              "  fired      welcome  at 0:00\n"
              "  grades     not judged  Bank: the recording does not tell the bank\n"
              "  file       /r/session-a.jsonl\n"
              "  not fired  final    never below 600 ft AGL (at 0:10), and waits for 500 ft on the way down\n"
              "             around   never above 900 ft AGL (at 0:00), and waits for 1000 ft on the way up");
}

TEST(ReceiptTest, ItsColumnsStandWhateverLettersTheIdsHave) {
    Receipt receipt{.lesson = "Platzrunde", .end = "a key was pressed", .parts = {}, .missed = {}};
    receipt.missed = {{"höhe", "", "never below", {}}, {"turn", "", "never above", {}}};
    EXPECT_EQ(receiptText(receipt),
              "Platzrunde: a key was pressed\n"
              "  not fired  höhe  never below\n"
              "             turn  never above");
}

TEST(ReceiptTest, EachRecordingHasItsOwn) {
    auto flight = flown();
    flight.beginAnew();
    flight.take(sample(0, 0, 1100));
    flight.take(fired("around", 0));
    const auto text = receiptText(receiptFor(flight, {"a", "b"}));
    EXPECT_NE(text.find("recording 1 of 2\n  samples    22 over 0:30"), std::string::npos) << text;
    EXPECT_NE(text.find("recording 2 of 2\n  samples    1 over 0:00"), std::string::npos) << text;
    EXPECT_NE(text.find("not fired  final"), std::string::npos) << text;
    EXPECT_EQ(text.find("not fired  around"), std::string::npos) << text;
}

TEST(ReceiptTest, ForProgramsItIsAnObject) {
    LessonFlight flight(test::script(), std::nullopt);
    flight.take(sample(0));
    flight.take(fired("welcome", 0));
    EXPECT_EQ(
        receiptJson(receiptFor(flight, {"f"})),
        R"({"kind":"receipt","lesson":"Circuit","end":"a key was pressed","parts":[{"file":"f","samples":1,)"
        R"("length_s":0,"gaps":0,"gap_s":0,"frozen":0,"frozen_s":0,"fired":[{"trigger_id":"welcome",)"
        R"("elapsed_s":0,"action_kind":"speak"}],"grades":[{"id":"bank","title":"Bank",)"
        R"("verdict":"not judged","words":"the recording does not tell the bank"}]}],"missed":[)"
        R"({"trigger_id":"final","words":"never below 900 ft AGL (at 0:00), and waits for 500 ft on the )"
        R"(way down"},{"trigger_id":"around","words":"never above 900 ft AGL (at 0:00), and waits for )"
        R"(1000 ft on the way up"}]})");
}

TEST(ReceiptTest, AnEmptyFlightHasAReceipt) {
    const auto text = receiptText(receiptFor(LessonFlight(test::script(), std::nullopt), {"f"}));
    EXPECT_NE(text.find("samples    0 over 0:00"), std::string::npos) << text;
    EXPECT_NE(text.find("the recording has no samples"), std::string::npos) << text;
}

TEST(ReceiptTest, WhereTheCompanionSaysThatItDidNotFireItDidNot) {
    LessonFlight flight(test::script(), std::nullopt);
    flight.take(sample(0));
    const auto receipt = receiptFor(flight, {"f"});
    ASSERT_EQ(receipt.missed.size(), 3U);
    EXPECT_EQ(receipt.missed[0].triggerId, "welcome");
    EXPECT_EQ(receipt.missed[0].words, "the companion did not say that it fired, though it might have");
}

} // namespace
} // namespace tarnly::client
