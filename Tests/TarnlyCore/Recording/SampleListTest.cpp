#include "TarnlyCore/Recording/SampleList.hpp"

#include <gtest/gtest.h>

#include "TarnlyCore/Recording/Recordings.hpp"

namespace tarnly {
namespace {

constexpr double always = -std::numeric_limits<double>::infinity();

std::vector<TrackSample> all(const SampleList::Snapshot& snapshot, double since = always) {
    std::vector<TrackSample> result;
    SampleList::Snapshot::Cursor cursor;
    TrackSample sample = test::fullSampleAt(-1); // what was there before leaves nothing behind
    while (snapshot.next(cursor, since, sample))
        result.push_back(sample);
    return result;
}

TEST(SampleList, KeepsSamplesOfAllKindsExactlyAndInOrder) {
    SampleList list;
    std::vector<TrackSample> expected;
    for (int i = 0; i < 2000; ++i) {
        auto sample = i % 3 == 0 ? test::sampleAt(i) : test::fullSampleAt(i);
        if (i % 5 == 0) sample.gearDown = false;
        if (i % 7 == 0) sample.throttleRatio.emplace();
        if (i % 11 == 0) sample.altitudeFt = -0.0;
        expected.push_back(sample);
        EXPECT_EQ(list.append(sample).unpacked(), sample);
    }
    EXPECT_EQ(list.size(), 2000U);
    EXPECT_EQ(all(list.snapshot()), expected);
}

TEST(SampleList, EachFieldAloneComesBackAlone) {
    const auto check = [](const auto& field) {
        TrackSample sample;
        sample.*field.member = test::fullSampleAt(3).*field.member;
        SampleList list;
        EXPECT_EQ(list.append(sample).unpacked(), sample) << field.key;
        EXPECT_EQ(all(list.snapshot()), std::vector{sample}) << field.key;
    };
    std::apply([&](const auto&... fields) { (check(fields), ...); }, TrackSample::fields());
}

TEST(SampleList, TakesASampleThatIsLongerThanABlock) {
    SampleList list;
    auto longest = test::fullSampleAt(2);
    longest.throttleRatio = std::vector<double>(100'000, 0.25);
    list.append(test::sampleAt(1));
    list.append(longest);
    list.append(test::sampleAt(3));
    EXPECT_EQ(all(list.snapshot()), (std::vector{test::sampleAt(1), longest, test::sampleAt(3)}));
}

TEST(SampleList, ASnapshotDoesNotGrowAndOutlivesTheList) {
    SampleList list;
    EXPECT_TRUE(all(list.snapshot()).empty());
    for (int i = 0; i < 1000; ++i)
        list.append(test::fullSampleAt(i));
    const auto snapshot = list.snapshot();
    list.append(test::fullSampleAt(1000));
    const auto whole = list.snapshot();
    list = {};
    EXPECT_EQ(all(snapshot).size(), 1000U);
    EXPECT_EQ(all(whole).back(), test::fullSampleAt(1000));
}

TEST(SampleList, TellsWhatIsAfterATimeWhateverTheOrder) {
    SampleList list;
    for (int i = 0; i < 3000; ++i)
        list.append(test::sampleAt(i % 1000));
    EXPECT_EQ(all(list.snapshot(), 998), std::vector<TrackSample>(3, test::sampleAt(999)));
    EXPECT_TRUE(all(list.snapshot(), 999).empty());
}

/// Half of what the house allows a sample of a day's recording.
TEST(SampleList, ATypicalSampleTakesLessThan200Bytes) {
    std::vector<PackedSample::Word> words;
    PackedSample::pack(test::fullSampleAt(1), words);
    EXPECT_LT(words.size() * sizeof(PackedSample::Word), 200U);
    EXPECT_EQ(PackedSample::sizeOf(words.data()), words.size());
}

} // namespace
} // namespace tarnly
