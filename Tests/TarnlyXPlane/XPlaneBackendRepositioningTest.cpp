#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "TarnlyXPlane/Attitude.hpp"
#include "TarnlyXPlane/BackendFixture.hpp"

namespace tarnly {
namespace {

using namespace test;
using Case = XPlaneBackendError::Case;

struct Write {
    std::string name;
    double value;

    bool operator==(const Write&) const = default;
    friend void PrintTo(const Write& write, std::ostream* out) { *out << write.name << " = " << write.value; }
};

using Writes = std::vector<Write>;

class XPlaneBackendRepositioningTest : public BackendFixture {
  protected:
    XPlaneBackendRepositioningTest() {
        std::int64_t id = 10;
        for (const auto* name : {"y_agl", "elevation", "latitude", "longitude", "theta", "phi", "psi",
                                 "local_vx", "local_vy", "local_vz", "P", "Q", "R"})
            transport->datarefs.emplace("sim/flightmodel/position/" + std::string(name), ++id);
        transport->datarefs.emplace("sim/cockpit2/engine/actuators/throttle_ratio_all", ++id);
    }

    void deliver(const std::string& name, const std::string& value) {
        deliverValues({{transport->datarefs.at("sim/flightmodel/position/" + name), value}});
    }

    /// What was written, by the last part of each name. Each write must be a request of its own, without
    /// index.
    Writes writes() const {
        Writes result;
        for (const auto& message : sent()) {
            if (message.at("type") != "dataref_set_values") continue;
            const auto& entries = message.at("params").at("datarefs").as_array();
            EXPECT_EQ(entries.size(), 1U);
            EXPECT_FALSE(entries[0].as_object().contains("index"));
            result.push_back(
                {nameOf(entries[0].at("id").as_int64()), entries[0].at("value").to_number<double>()});
        }
        return result;
    }

    std::string nameOf(std::int64_t id) const {
        for (const auto& [name, itsId] : transport->datarefs) {
            if (itsId == id) return name.substr(name.rfind('/') + 1);
        }
        return "?";
    }

    /// Starts moving to latitude 47.1, longitude 8.2.
    void startMove() {
        boost::asio::co_spawn(io, backend->moveToPreservingAgl(47.1, 8.2), [this](std::exception_ptr error) {
            failure = error;
            isDone = true;
        });
        VirtualClock::settle(io);
    }

    bool isDone = false;
    std::exception_ptr failure;
};

TEST_F(XPlaneBackendRepositioningTest, MoveCorrectsTheHeightAfterTwoSeconds) {
    connect();
    deliver("y_agl", "300");
    deliver("elevation", "1000");
    startMove();
    const Writes first{{"latitude", 47.1}, {"longitude", 8.2}, {"elevation", 1000}};
    EXPECT_EQ(writes(), first);

    clock.advance(io, 1s);
    deliver("y_agl", "120.5");
    deliver("elevation", "999");
    clock.advance(io, 999ms);
    EXPECT_EQ(writes(), first);
    clock.advance(io, 1ms);
    EXPECT_EQ(writes(), (Writes{{"latitude", 47.1},
                                {"longitude", 8.2},
                                {"elevation", 1000},
                                {"latitude", 47.1},
                                {"longitude", 8.2},
                                {"elevation", 1179.5}}));
    EXPECT_TRUE(isDone);
    EXPECT_FALSE(failure);
}

TEST_F(XPlaneBackendRepositioningTest, MoveSubscribesWhatItNeedsFirst) {
    connect();
    startMove();
    EXPECT_EQ(sentDatarefs(0), parseJson(R"([{"id":11}])"));
    deliver("y_agl", "300");
    clock.advance(io, 20ms);
    EXPECT_EQ(sentDatarefs(1), parseJson(R"([{"id":12}])"));
    deliver("elevation", "1000");
    clock.advance(io, 20ms);
    EXPECT_EQ(writes().size(), 3U);
    clock.advance(io, 2s);
    EXPECT_EQ(writes().size(), 6U);
    EXPECT_EQ(writes().back().value, 1000);
    EXPECT_TRUE(isDone);
}

TEST_F(XPlaneBackendRepositioningTest, MoveWithoutAValueFailsBeforeAnyWrite) {
    connect();
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->moveToPreservingAgl(47, 8)),
              XPlaneBackendError(Case::timeout, "sim/flightmodel/position/y_agl"));
    EXPECT_TRUE(writes().empty());
}

TEST_F(XPlaneBackendRepositioningTest, WritesDoneBeforeAFailureStay) {
    transport->datarefs.erase("sim/flightmodel/position/longitude");
    connect();
    deliver("y_agl", "300");
    deliver("elevation", "1000");
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->moveToPreservingAgl(47, 8)),
              XPlaneBackendError(Case::unknownDataref, "sim/flightmodel/position/longitude"));
    EXPECT_EQ(writes(), (Writes{{"latitude", 47}}));
}

TEST_F(XPlaneBackendRepositioningTest, AttitudeWritesNineDatarefsInOrder) {
    connect();
    deliver("elevation", "3000");
    deliver("psi", "120");
    run(backend->applyAttitude(10, -15, 90, 0.75));

    const double speed = 90 * 0.514444 / rootOfDensityRatio(3000);
    const double pitch = 10 * std::numbers::pi / 180;
    const double heading = 120 * std::numbers::pi / 180;
    const Writes expected{{"theta", 10},
                          {"phi", -15},
                          {"local_vx", speed * std::cos(pitch) * std::sin(heading)},
                          {"local_vy", speed * std::sin(pitch)},
                          {"local_vz", -speed * std::cos(pitch) * std::cos(heading)},
                          {"P", 0},
                          {"Q", 0},
                          {"R", 0},
                          {"throttle_ratio_all", 0.75}};
    EXPECT_EQ(writes(), expected);
    EXPECT_EQ(sent().size(), 9U);
}

TEST_F(XPlaneBackendRepositioningTest, AttitudeAtSeaLevelNeedsNoDensityCorrection) {
    connect();
    deliver("elevation", "0");
    deliver("psi", "0");
    run(backend->applyAttitude(30, 0, 100, 0));
    EXPECT_EQ(writes()[3], (Write{"local_vy", 100 * 0.514444 * std::sin(30 * (std::numbers::pi / 180))}));
}

TEST_F(XPlaneBackendRepositioningTest, AttitudeBeyondTheRangeOfDoublesFails) {
    connect();
    deliver("elevation", "20000");
    deliver("psi", "45");
    failureOf<JsonError>(backend->applyAttitude(0, 0, 1.7e308, 0));
    EXPECT_EQ(writes(), (Writes{{"theta", 0}, {"phi", 0}}));
}

TEST_F(XPlaneBackendRepositioningTest, AttitudeWithoutAHeadingWritesNothing) {
    connect();
    deliver("elevation", "0");
    EXPECT_EQ(failureOf<XPlaneBackendError>(backend->applyAttitude(0, 0, 100, 0)),
              XPlaneBackendError(Case::timeout, "sim/flightmodel/position/psi"));
    EXPECT_TRUE(writes().empty());
}

} // namespace
} // namespace tarnly
