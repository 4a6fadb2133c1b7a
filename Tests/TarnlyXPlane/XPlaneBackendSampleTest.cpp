#include <gtest/gtest.h>

#include <utility>

#include "TarnlyXPlane/BackendFixture.hpp"
#include "TarnlyXPlane/Datarefs.hpp"

namespace tarnly {
namespace {

using namespace test;

class XPlaneBackendSampleTest : public BackendFixture {
  protected:
    /// All sample datarefs, with ids 101 to 113 in the order of subscription.
    XPlaneBackendSampleTest() {
        std::int64_t id = 100;
        for (const auto name : datarefs::samples)
            transport->datarefs.emplace(name, ++id);
    }

    /// Takes a sample in the background.
    void startSample() {
        boost::asio::co_spawn(io, backend->getTrackSample(),
                              [this](std::exception_ptr error, SampleObservation taken) {
                                  failure = error;
                                  sample = taken.sample;
                              });
        VirtualClock::settle(io);
    }

    std::optional<TrackSample> sample;
    std::exception_ptr failure;
};

TEST_F(XPlaneBackendSampleTest, FirstSampleSubscribesAllInOneRequestInOrder) {
    startSample();
    ASSERT_EQ(sent().size(), 1U);
    EXPECT_EQ(sent()[0], parseJson(R"({"type":"dataref_subscribe_values","req_id":1,"params":{"datarefs":[
        {"id":101},{"id":102},{"id":103},{"id":104},{"id":105},{"id":106},{"id":107},{"id":108},{"id":109},{"id":110},
        {"id":111},{"id":112},{"id":113}]}})"));
    deliverValues({{101, "47.5"}, {104, "100"}, {106, "[0,1,1]"}});
    EXPECT_FALSE(sample);
    clock.advance(io, 20ms);
    EXPECT_FALSE(sample) << "the altitude has not come";
    deliverValues({{103, "3500"}});
    clock.advance(io, 20ms);
    ASSERT_TRUE(sample);
    TrackSample expected;
    expected.altitudeFt = 3500;
    expected.lat = 47.5;
    expected.aglFt = 328.084;
    expected.gearRatio = 2.0 / 3;
    EXPECT_EQ(*sample, expected);
}

TEST_F(XPlaneBackendSampleTest, WaitsForTheAltitudeAloneAndNotLongerThanASecond) {
    startSample();
    deliverValues({{108, "[1]"}});
    clock.advance(io, 979ms);
    EXPECT_FALSE(sample);
    clock.advance(io, 1ms);
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->mixtureRatio, (std::vector<double>{1}));
}

TEST_F(XPlaneBackendSampleTest, SaysWhetherTheAltitudeIsKnown) {
    EXPECT_FALSE(run(backend->getTrackSample()).isAltitudeKnown);
    deliverValues({{103, "0"}});
    EXPECT_TRUE(run(backend->getTrackSample()).isAltitudeKnown);
    deliverValues({{103, "1e+9999"}});
    const auto wild = run(backend->getTrackSample());
    EXPECT_FALSE(wild.isAltitudeKnown);
    EXPECT_EQ(wild.sample.altitudeFt, 0);
}

TEST_F(XPlaneBackendSampleTest, ValuesOfOtherDatarefsDoNotEndTheWait) {
    startSample();
    deliverValues({{99, "1"}});
    clock.advance(io, 979ms);
    EXPECT_FALSE(sample);
    clock.advance(io, 1ms);
    EXPECT_TRUE(sample);
}

TEST_F(XPlaneBackendSampleTest, LateSimulatorGivesAnEmptySampleAfterFiftyLooks) {
    startSample();
    clock.advance(io, 979ms);
    EXPECT_FALSE(sample);
    clock.advance(io, 1ms);
    ASSERT_TRUE(sample);
    EXPECT_FALSE(failure);
    EXPECT_EQ(*sample, TrackSample());
}

TEST_F(XPlaneBackendSampleTest, LaterSamplesNeitherSubscribeNorWait) {
    run(backend->getTrackSample());
    deliverValues({{103, "3500"}});
    const auto before = clock.now();
    EXPECT_EQ(run(backend->getTrackSample()).sample.altitudeFt, 3500);
    deliverValues({{103, "3600"}});
    EXPECT_EQ(run(backend->getTrackSample()).sample.altitudeFt, 3600);
    EXPECT_EQ(clock.now(), before);
    EXPECT_EQ(sent().size(), 1U);
}

TEST_F(XPlaneBackendSampleTest, NamesOutsideTheCatalogueAreLeftOut) {
    transport->datarefs = {{std::string(datarefs::autopilotServosOn), 5},
                           {std::string(datarefs::longitude), 6}};
    startSample();
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":6},{"id":5}])"));
    clock.advance(io, 1s);
    EXPECT_TRUE(sample);
}

TEST_F(XPlaneBackendSampleTest, AtTheMainMenuThereIsNoFlightToSample) {
    transport->datarefs.clear();
    failureOf<XPlaneBackendError>(backend->getTrackSample());
    EXPECT_TRUE(sent().empty());
}

TEST_F(XPlaneBackendSampleTest, AtTheMainMenuEachBeatLooksForTheFlight) {
    const auto flight = std::exchange(transport->datarefs, {});
    failureOf<XPlaneBackendError>(backend->getTrackSample());
    transport->datarefs = flight;
    clock.advance(io, 500ms);
    failureOf<XPlaneBackendError>(backend->getTrackSample());
    clock.advance(io, 500ms);
    run(backend->getTrackSample());
    EXPECT_EQ(sent().size(), 1U);
}

TEST_F(XPlaneBackendSampleTest, FailedSubscriptionIsTriedAgain) {
    connect();
    transport->webSocket->cancel();
    VirtualClock::settle(io);
    failureOf<NetworkError>(backend->getTrackSample());
    failureOf<NetworkError>(backend->getTrackSample());
}

} // namespace
} // namespace tarnly
