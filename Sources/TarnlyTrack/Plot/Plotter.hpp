#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Plot/PlotFlight.hpp"
#include "TarnlyTrack/Plot/Thinning.hpp"

namespace tarnly::track {

/// Draws one log: what all its lines have in common. Draws it up to where time begins again. For one thread;
/// the log outlives it.
class Plotter {
  public:
    /// One number a sample; NaN where it is not known.
    using Column = std::vector<double>;

    /// The samples `marked` are kept in every line, as are those on which triggers fired.
    Plotter(const FlightLog& log, std::size_t columns, std::span<const std::size_t> marked);

    std::size_t count() const { return count_; }
    double timeOf(std::size_t sample) const { return times_[sample]; }

    std::vector<PlotStretch> gaps() const;
    std::vector<PlotStretch> frozen() const;

    Column column(Quantity quantity) const;
    Column column(Switch which) const;
    Column column(Lever lever, std::size_t engine) const;

    /// None where nothing is known.
    std::vector<PlotLine> lines(const Column& values) const;
    std::vector<PlotLine> lines(Lever lever) const;

    /// Adds the way to `flight`.
    PlotTrack track(PlotFlight& flight) const;

  private:
    void divideIntoRuns();
    void pin(std::span<const std::size_t> marked);
    bool doAllEnginesAgree(Lever lever) const;
    std::vector<RunNumber> runsOfTrack(const Column& lats, const Column& lons, PlotFlight& flight) const;

    const FlightLog& log_;
    std::size_t columns_;
    std::size_t count_;
    std::span<const double> times_;
    std::vector<RunNumber> runs_;
    std::vector<std::size_t> pinned_;
};

} // namespace tarnly::track
