#pragma once

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly::test {

/// A simulator that notes what it is asked, and answers from a table. An operation whose name is in
/// `failures` throws that text.
class FakeBackend final : public SimBackend {
  public:
    std::vector<std::string> calls;
    std::map<std::string, double> datarefs;
    std::map<std::string, std::string> failures;
    std::vector<FlightListing> flights;
    TrackSample sample;
    bool isAltitudeKnown = true;
    std::int64_t link = 1;
    /// While false, no sample is proven.
    bool isAlive = true;
    SimulatorStage presentStage{SimulatorStage::Kind::flightLoaded, {}, {}};
    std::function<void()> tellStageChange;
    bool isWatched = false;
    /// Where set, reading a dataref that is not in the table waits a second before it fails, and a sample
    /// waits for `sampleDelay` and knows when it was taken.
    Clock* clock = nullptr;
    Clock::Duration sampleDelay{};

    SimInfo simInfo() override {
        note("simInfo");
        return SimInfo{"xplane", "unknown"};
    }

    /// Whether values are at hand, so that nobody waits for them.
    bool hasAllAtHand = false;

    std::optional<std::vector<double>> presentDatarefs(const std::vector<std::string>& names) override {
        if (!hasAllAtHand) return std::nullopt;
        std::vector<double> values;
        for (const auto& name : names) {
            if (!datarefs.contains(name)) return std::nullopt;
            values.push_back(datarefs.at(name));
        }
        return values;
    }

    Task<std::vector<double>> getDatarefs(std::shared_ptr<const std::vector<std::string>> names) override {
        std::vector<double> values;
        for (const auto& name : *names) {
            const double value = co_await getDataref(name);
            values.push_back(value);
        }
        co_return values;
    }

    Task<double> getDataref(std::string name) {
        note("getDataref " + name);
        if (!datarefs.contains(name) && clock != nullptr) {
            co_await clock->sleepFor(std::chrono::seconds(1));
        }
        if (!datarefs.contains(name)) throw std::runtime_error("timeout(\"" + name + "\")");
        co_return datarefs.at(name);
    }

    Task<> setDataref(std::string name, double value, std::optional<std::int64_t> index) override {
        const auto element = index ? "[" + std::to_string(*index) + "]" : "";
        note("setDataref " + name + element + " " + std::to_string(value));
        co_return;
    }

    Task<> runCommand(std::string name) override {
        note("runCommand " + name);
        co_return;
    }

    Task<std::vector<FlightListing>> listFlights() override {
        note("listFlights");
        co_return flights;
    }

    Task<> loadFlight(std::string path) override {
        note("loadFlight " + path);
        co_return;
    }

    Task<SampleObservation> getTrackSample() override {
        note("getTrackSample");
        if (clock != nullptr && sampleDelay > Clock::Duration::zero()) {
            co_await clock->sleepFor(sampleDelay);
        }
        SampleObservation seen;
        seen.sample = sample;
        seen.isAltitudeKnown = isAltitudeKnown;
        seen.link = link;
        if (clock != nullptr) seen.takenAt = clock->now();
        co_return seen;
    }

    Task<> moveToPreservingAgl(double latitude, double longitude) override {
        note("moveToPreservingAgl " + std::to_string(latitude) + " " + std::to_string(longitude));
        co_return;
    }

    Task<> applyAttitude(double pitchDeg, double bankDeg, double iasKts, double throttle) override {
        note("applyAttitude " + std::to_string(pitchDeg) + " " + std::to_string(bankDeg) + " " +
             std::to_string(iasKts) + " " + std::to_string(throttle));
        co_return;
    }

    bool isProven(std::int64_t ofLink, Clock::TimePoint) const override { return isAlive && ofLink == link; }

    SimulatorStage stage() const override { return presentStage; }

    void onStageChange(std::function<void()> tell) override { tellStageChange = std::move(tell); }

    void setWatched(bool watched) override { isWatched = watched; }

    int count(const std::string& call) const {
        return static_cast<int>(std::count(calls.begin(), calls.end(), call));
    }

  private:
    void note(const std::string& call) {
        calls.push_back(call);
        const auto failure = failures.find(call.substr(0, call.find(' ')));
        if (failure != failures.end()) throw std::runtime_error(failure->second);
    }
};

} // namespace tarnly::test
