#pragma once

#include <functional>
#include <vector>

#include "TarnlySimulator/World/FlightSource.hpp"
#include "TarnlyTrack/Replay/RecordedFlight.hpp"

namespace tarnly::track {

/// How a recording is flown again.
struct ReplayOptions {
    /// Where it begins, seconds of the recording.
    double from = 0;
    /// At its end it begins anew.
    bool isRepeated = false;
    /// The simulator is paused at first.
    bool isPaused = false;
    /// Called once the end has been reached, unless it is repeated.
    std::function<void()> onEnd{};
};

/// A recording as the flight of a stand-in for the simulator: the datarefs that the recording tells of, and
/// those of a few derived values. Nothing can be written: a recording cannot be flown. At its end it stands
/// still, as a paused simulator does.
class ReplayFlight : public simulator::FlightSource {
  public:
    ReplayFlight(RecordedFlight flight, ReplayOptions options);

    std::vector<simulator::Dataref> datarefs() const override;
    simulator::Value read(std::size_t flightValue) const override;
    void write(std::size_t flightValue, const simulator::Value& value) override;
    void step(double seconds) override;
    bool isPaused() const override;
    void beginAnew() override;
    bool loadSituation(std::string_view fileName) override;
    std::string_view phase() const override;

    /// How one of its datarefs comes from the recording.
    struct Served {
        const char* name;
        simulator::ValueType type;
        bool (*isTold)(const RecordedFlight& flight);
        simulator::Value (*read)(const RecordedFlight& flight);
    };

  private:
    RecordedFlight flight_;
    ReplayOptions options_;
    /// Those that the recording tells of.
    std::vector<const Served*> served_;
    bool hasEnded_ = false;
};

} // namespace tarnly::track
