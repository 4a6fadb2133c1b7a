#pragma once

#include <cstdint>

#include "TarnlySimulator/Flight/FlightModel.hpp"
#include "TarnlySimulator/World/FlightSource.hpp"

namespace tarnly::simulator {

/// The stand-in's own aircraft, with all that its catalogue has.
class PilotedFlight : public FlightSource {
  public:
    PilotedFlight(std::uint64_t seed, FlightPhase start, const DatarefOptions& options)
        : options_(options), start_(start), model_(seed, start) {}

    std::vector<Dataref> datarefs() const override { return stockDatarefs(options_); }
    Value read(std::size_t flightValue) const override;
    void write(std::size_t flightValue, const Value& value) override;
    void step(double seconds) override { model_.step(seconds); }
    void beginAnew() override { model_.begin(start_); }
    bool loadSituation(std::string_view fileName) override;
    std::string_view phase() const override { return name(model_.phase()); }

  private:
    const FlightBinding& binding(std::size_t flightValue) const;

    DatarefOptions options_;
    FlightPhase start_;
    FlightModel model_;
};

} // namespace tarnly::simulator
