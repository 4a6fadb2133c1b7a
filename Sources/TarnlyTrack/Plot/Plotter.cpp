#include "TarnlyTrack/Plot/Plotter.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::track {
namespace {

constexpr std::size_t mostEngines = 4;
/// Beyond it a number is nothing that an aircraft does, and no pixel either.
constexpr double largest = 1e9;

/// How many samples of the first recording there are, as far as its times can be drawn.
std::size_t drawnSamples(const FlightLog& log) {
    const auto times = log.column(Quantity::elapsedSeconds).first(log.firstRecording());
    const auto isBeyond = [](double time) { return std::abs(time) >= largest; };
    return static_cast<std::size_t>(std::ranges::find_if(times, isBeyond) - times.begin());
}

template <typename ValueOf>
Plotter::Column columnOf(std::size_t count, const ValueOf& valueOf) {
    Plotter::Column result(count);
    for (std::size_t i = 0; i < count; ++i)
        result[i] = valueOf(i);
    return result;
}

} // namespace

Plotter::Plotter(const FlightLog& log, std::size_t columns, std::span<const std::size_t> marked)
    : log_(log),
      columns_(columns),
      count_(drawnSamples(log)),
      times_(log.column(Quantity::elapsedSeconds).first(count_)),
      runs_(count_, 0) {
    divideIntoRuns();
    pin(marked);
}

std::vector<PlotStretch> Plotter::gaps() const {
    std::vector<PlotStretch> result;
    for (std::size_t i = 1; i < count_; ++i) {
        if (times_[i] - times_[i - 1] > longestStepSeconds) {
            result.emplace_back(times_[i - 1], times_[i]);
        }
    }
    return result;
}

std::vector<PlotStretch> Plotter::frozen() const {
    std::vector<PlotStretch> result;
    for (const auto& stretch : log_.frozen()) {
        if (stretch.end <= count_) result.emplace_back(times_[stretch.begin], times_[stretch.end - 1]);
    }
    return result;
}

Plotter::Column Plotter::column(Quantity quantity) const {
    const auto all = log_.column(quantity).first(count_);
    Column result(all.begin(), all.end());
    for (double& value : result) {
        if (std::abs(value) > largest) value = unknown;
    }
    return result;
}

Plotter::Column Plotter::column(Switch which) const {
    return columnOf(count_, [&](std::size_t sample) {
        const auto value = log_.value(which, sample);
        if (!value) return unknown;
        return *value ? 1.0 : 0.0;
    });
}

Plotter::Column Plotter::column(Lever lever, std::size_t engine) const {
    return columnOf(count_, [&](std::size_t sample) {
        const auto values = log_.value(lever, sample);
        const bool isKnown = values && engine < values->size() && std::abs((*values)[engine]) <= largest;
        return isKnown ? (*values)[engine] : unknown;
    });
}

std::vector<PlotLine> Plotter::lines(const Column& values) const {
    const auto runs = runsOfKnown(runs_, values);
    const auto kept = thinned(times_, values, runs, pinned_, columns_);
    if (kept.samples.empty()) return {};
    PlotLine result;
    for (const auto sample : kept.samples) {
        result.at.push_back(times_[sample]);
        result.value.push_back(values[sample]);
    }
    result.breaks = kept.breaks;
    return {std::move(result)};
}

std::vector<PlotLine> Plotter::lines(Lever lever) const {
    const auto engines = std::min(log_.engines(lever), mostEngines);
    if (engines == 0) return {};
    if (doAllEnginesAgree(lever)) return lines(column(lever, 0));
    std::vector<PlotLine> result;
    for (std::size_t engine = 0; engine < engines; ++engine) {
        // An engine without values stays in its place, as an empty line.
        auto one = lines(column(lever, engine));
        result.push_back(one.empty() ? PlotLine{} : std::move(one.front()));
    }
    return result;
}

PlotTrack Plotter::track(PlotFlight& flight) const {
    const auto lats = column(Quantity::lat);
    const auto lons = column(Quantity::lon);
    const auto runs = runsOfTrack(lats, lons, flight);
    const auto kept = united(thinned(times_, lats, runs, pinned_, columns_),
                             thinned(times_, lons, runs, pinned_, columns_), runs);
    PlotTrack result;
    for (const auto sample : kept.samples) {
        result.at.push_back(times_[sample]);
        result.lat.push_back(lats[sample]);
        result.lon.push_back(lons[sample]);
    }
    result.breaks = kept.breaks;
    return result;
}

/// No line leads across a gap, nor through a stretch in which the simulator was paused.
void Plotter::divideIntoRuns() {
    std::vector<bool> isBroken(count_, false);
    for (std::size_t i = 1; i < count_; ++i)
        isBroken[i] = times_[i] - times_[i - 1] > longestStepSeconds;
    std::vector<bool> isPaused(count_, false);
    for (const auto& stretch : log_.frozen()) {
        if (stretch.end > count_) continue;
        isBroken[stretch.end - 1] = true;
        for (std::size_t i = stretch.begin + 1; i + 1 < stretch.end; ++i)
            isPaused[i] = true;
    }
    RunNumber run = 0;
    for (std::size_t i = 0; i < count_; ++i) {
        if (isBroken[i]) ++run;
        runs_[i] = isPaused[i] ? inNoRun : run;
    }
}

void Plotter::pin(std::span<const std::size_t> marked) {
    for (const auto& fired : log_.fired()) {
        if (fired.sample && *fired.sample < count_) pinned_.push_back(*fired.sample);
    }
    std::copy_if(marked.begin(), marked.end(), std::back_inserter(pinned_),
                 [&](std::size_t sample) { return sample < count_; });
    std::sort(pinned_.begin(), pinned_.end());
}

bool Plotter::doAllEnginesAgree(Lever lever) const {
    for (std::size_t sample = 0; sample < count_; ++sample) {
        const auto values = log_.value(lever, sample);
        if (!values || values->empty()) continue;
        const bool isSame = std::all_of(values->begin(), values->end(),
                                        [&](double value) { return value == values->front(); });
        if (!isSame) return false;
    }
    return true;
}

/// The track has a break where the aircraft was put elsewhere, too. Adds the ways up.
std::vector<RunNumber> Plotter::runsOfTrack(const Column& lats, const Column& lons,
                                            PlotFlight& flight) const {
    auto known = runsOfKnown(runs_, lats);
    known = runsOfKnown(known, lons);
    RunNumber run = 0;
    double metres = 0;
    std::vector<RunNumber> result(known.size(), inNoRun);
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (known[i] == inNoRun) continue;
        const Position here{lats[i], lons[i]};
        const bool goesOn = i > 0 && known[i - 1] == known[i];
        const auto before = goesOn ? Position{lats[i - 1], lons[i - 1]} : here;
        const bool isFlown = goesOn && canFly(before, here, times_[i] - times_[i - 1]);
        if (isFlown) metres += greatCircleMeters(before, here);
        if (!isFlown) ++run;
        result[i] = run;
    }
    if (run > 0) flight.distanceNm = metres / metersPerNauticalMile;
    return result;
}

} // namespace tarnly::track
