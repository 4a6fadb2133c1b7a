#include "TarnlyCore/Protocol/CatchUpReply.hpp"

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TarnlyCore/Recording/Recorders.hpp"

namespace tarnly {
namespace {

struct CatchUpReplyTest : testing::Test {
    const test::TemporaryFolder folder;
    SystemClock clock;
    FlightRecorder recording{folder.path(), clock};
    RecordedFlight expected;

    CatchUpReplyTest() { recording.start(); }

    void record(double time, const std::vector<std::string>& ids) {
        test::record(recording, test::fullSampleAt(time), ids);
        expected.samples.push_back(test::fullSampleAt(time));
        for (const auto& id : ids)
            expected.fired.push_back(test::firedAt(time, id));
    }

    std::vector<std::string> pieces(std::optional<double> since = std::nullopt) const {
        CatchUpReply reply({"catch_up", 7}, recording.snapshot(), since);
        std::vector<std::string> result;
        do {
            EXPECT_FALSE(reply.isWhole());
            result.push_back(reply.nextPiece());
        } while (!result.back().empty() && !reply.isWhole());
        EXPECT_EQ(reply.nextPiece(), "");
        return result;
    }

    std::string expectedText() const {
        return encodeJson(ResponseEnvelope<RecordedFlight>{"catch_up", 7, expected});
    }

    /// Whether the pieces are of that size, about, and together the same as the records in one.
    void expectPieces(std::size_t atLeast) const {
        std::string whole;
        const auto all = pieces();
        EXPECT_GE(all.size(), atLeast);
        for (const auto& piece : all) {
            EXPECT_LE(piece.size(), CatchUpReply::pieceSize + 1024);
            EXPECT_TRUE(piece.size() >= CatchUpReply::pieceSize || &piece == &all.back());
            whole += piece;
        }
        EXPECT_TRUE(whole == expectedText());
    }
};

TEST_F(CatchUpReplyTest, AShortOneIsOnePiece) {
    EXPECT_EQ(pieces(), std::vector{expectedText()});
    record(1, {});
    record(2, {"a/b", "c"});
    EXPECT_EQ(pieces(), std::vector{expectedText()});
    expected.samples.erase(expected.samples.begin());
    EXPECT_EQ(pieces(1), std::vector{expectedText()});
    expected = {};
    EXPECT_EQ(pieces(2), std::vector{expectedText()});
}

TEST_F(CatchUpReplyTest, PiecesBreakBetweenSamples) {
    for (int i = 0; i < 10'000; ++i)
        record(i, {});
    expectPieces(3);
}

TEST_F(CatchUpReplyTest, PiecesBreakBetweenTriggersOfOneSample) {
    record(1, std::vector<std::string>(40'000, "a trigger with a name that takes a few bytes"));
    record(2, {"last"});
    expectPieces(4);
}

} // namespace
} // namespace tarnly
