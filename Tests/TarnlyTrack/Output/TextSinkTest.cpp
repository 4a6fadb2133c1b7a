#include "TarnlyTrack/Output/TextSink.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "Support/FullDisk.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Output/Progress.hpp"

namespace tarnly::track {
namespace {

namespace fs = std::filesystem;

class FileSinkTest : public testing::Test {
  protected:
    const test::TemporaryFolder folder;
    const fs::path file = folder.write("flight.gpx", "of before");

    auto filesThere() const { return std::distance(fs::directory_iterator(folder.path()), {}); }
};

TEST_F(FileSinkTest, TakesItsPlaceWhenItIsWhole) {
    FileSink sink(file);
    sink.write("one ");
    sink.write("two");
    EXPECT_EQ(test::contentOf(file), "of before");
    sink.finish();
    EXPECT_EQ(test::contentOf(file), "one two");
    EXPECT_EQ(filesThere(), 1);
}

TEST_F(FileSinkTest, LeavesNothingBehindUnlessItIsFinished) {
    {
        FileSink sink(file);
        sink.write("half");
    }
    EXPECT_EQ(test::contentOf(file), "of before");
    EXPECT_EQ(filesThere(), 1);
}

TEST_F(FileSinkTest, AFullDiskLeavesWhatIsThere) {
    {
        FileSink sink(file);
        const test::FullDisk full(4);
        EXPECT_THROW(sink.write("too long"), TrackError);
    }
    EXPECT_EQ(test::contentOf(file), "of before");
    EXPECT_EQ(filesThere(), 1);
}

TEST_F(FileSinkTest, NeedsAFolderAndReplacesNone) {
    EXPECT_THROW(FileSink(folder.path() / "none" / "flight.gpx"), TrackError);
    EXPECT_THROW(FileSink{folder.path()}, TrackError);
}

TEST(PieceWriterTest, HandsOnLargePiecesAndTheRest) {
    std::ostringstream stream;
    StreamSink sink(stream);
    PieceWriter writer(sink);
    writer.text = "short";
    writer.pass();
    EXPECT_EQ(stream.str(), "");
    writer.text.append(100'000, 'x');
    writer.pass();
    EXPECT_EQ(stream.str().size(), 100'005U);
    writer.text += "end";
    writer.passAll();
    EXPECT_EQ(stream.str().size(), 100'008U);
}

TEST(ProgressTest, DrawsOneLineAndTakesItAway) {
    std::ostringstream stream;
    {
        Progress progress(stream, true);
        progress.show("reading", 0, 1000);
        progress.show("reading", 9, 1000); // still no per cent
        progress.show("reading", 10, 1000);
        progress.show("reading", 2000, 1000); // it has grown meanwhile
    }
    EXPECT_EQ(stream.str(), "\r\033[Kreading 0 %\r\033[Kreading 1 %\r\033[Kreading 100 %\r\033[K");
}

TEST(ProgressTest, IsSilentWhereNobodyWatches) {
    std::ostringstream stream;
    Progress(stream, false).show("reading", 1, 2);
    Progress(stream, true).show("reading", 0, 0);
    EXPECT_EQ(stream.str(), "");
}

} // namespace
} // namespace tarnly::track
