#include "TarnlyTrack/Plot/Thinning.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace tarnly::track {
namespace {

std::vector<std::size_t> drawnSamples(std::span<const RunNumber> runs) {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (runs[i] != inNoRun) result.push_back(i);
    }
    return result;
}

/// Which column of which run a sample stands in.
struct Cell {
    RunNumber run;
    double column;

    bool operator==(const Cell&) const = default;
};

/// The least and the greatest of the samples of one cell, as they come.
class Extremes {
  public:
    explicit Extremes(std::span<const double> values) : values_(values) {}

    void begin(std::size_t sample) { firstLeast_ = lastLeast_ = firstGreatest_ = lastGreatest_ = sample; }

    void add(std::size_t sample) {
        if (values_[sample] < values_[firstLeast_]) firstLeast_ = sample;
        if (values_[sample] <= values_[lastLeast_]) lastLeast_ = sample;
        if (values_[sample] > values_[firstGreatest_]) firstGreatest_ = sample;
        if (values_[sample] >= values_[lastGreatest_]) lastGreatest_ = sample;
    }

    void keep(std::vector<std::size_t>& kept) const {
        kept.insert(kept.end(), {firstLeast_, lastLeast_, firstGreatest_, lastGreatest_});
    }

  private:
    std::span<const double> values_;
    std::size_t firstLeast_ = 0;
    std::size_t lastLeast_ = 0;
    std::size_t firstGreatest_ = 0;
    std::size_t lastGreatest_ = 0;
};

void makeSet(std::vector<std::size_t>& samples) {
    std::sort(samples.begin(), samples.end());
    samples.erase(std::unique(samples.begin(), samples.end()), samples.end());
}

std::vector<std::size_t> extremesOfCells(std::span<const double> times, std::span<const double> values,
                                         std::span<const RunNumber> runs,
                                         const std::vector<std::size_t>& drawn, std::size_t columns) {
    const double begin = times[drawn.front()];
    const double width = (times[drawn.back()] - begin) / static_cast<double>(columns);
    const auto cellOf = [&](std::size_t i) { return Cell{runs[i], std::floor((times[i] - begin) / width)}; };
    std::vector<std::size_t> kept;
    Extremes extremes(values);
    for (std::size_t place = 0; place < drawn.size(); ++place) {
        const auto sample = drawn[place];
        const bool isFirst = place == 0 || cellOf(drawn[place - 1]) != cellOf(sample);
        const bool isLast = place + 1 == drawn.size() || cellOf(drawn[place + 1]) != cellOf(sample);
        if (isFirst) extremes.begin(sample);
        extremes.add(sample);
        if (isLast) extremes.keep(kept);
        const bool isEndOfRun = place == 0 || place + 1 == drawn.size() ||
                                runs[drawn[place - 1]] != runs[sample] ||
                                runs[drawn[place + 1]] != runs[sample];
        if (isEndOfRun) kept.push_back(sample);
    }
    makeSet(kept);
    return kept;
}

/// Without what lies on a level line between its neighbours.
std::vector<std::size_t> withoutLevel(const std::vector<std::size_t>& kept, std::span<const double> values,
                                      std::span<const RunNumber> runs, std::span<const std::size_t> pinned) {
    const auto isSame = [&](std::size_t a, std::size_t b) {
        return runs[a] == runs[b] && values[a] == values[b];
    };
    std::vector<std::size_t> result;
    for (std::size_t place = 0; place < kept.size(); ++place) {
        const bool isInside = place > 0 && place + 1 < kept.size();
        const bool isLevel = isInside && isSame(kept[place - 1], kept[place]) &&
                             isSame(kept[place], kept[place + 1]) &&
                             !std::binary_search(pinned.begin(), pinned.end(), kept[place]);
        if (!isLevel) result.push_back(kept[place]);
    }
    return result;
}

KeptSamples withBreaks(std::vector<std::size_t> samples, std::span<const RunNumber> runs) {
    KeptSamples result{std::move(samples), {}};
    for (std::size_t place = 0; place < result.samples.size(); ++place) {
        if (place == 0 || runs[result.samples[place]] != runs[result.samples[place - 1]]) {
            result.breaks.push_back(place);
        }
    }
    return result;
}

} // namespace

std::vector<RunNumber> runsOfKnown(std::span<const RunNumber> runs, std::span<const double> values) {
    std::vector<RunNumber> result;
    result.reserve(runs.size());
    RunNumber run = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const bool isDrawn = runs[i] != inNoRun && !std::isnan(values[i]);
        const bool goesOn = i > 0 && isDrawn && result[i - 1] != inNoRun && runs[i - 1] == runs[i];
        if (isDrawn && !goesOn) ++run;
        result.push_back(isDrawn ? run : inNoRun);
    }
    return result;
}

KeptSamples thinned(std::span<const double> times, std::span<const double> values,
                    std::span<const RunNumber> runs, std::span<const std::size_t> pinned,
                    std::size_t columns) {
    auto kept = drawnSamples(runs);
    if (kept.size() > 2 * columns) {
        kept = extremesOfCells(times, values, runs, kept, columns);
        std::copy_if(pinned.begin(), pinned.end(), std::back_inserter(kept),
                     [&](std::size_t sample) { return runs[sample] != inNoRun; });
        makeSet(kept);
    }
    return withBreaks(withoutLevel(kept, values, runs, pinned), runs);
}

KeptSamples united(const KeptSamples& a, const KeptSamples& b, std::span<const RunNumber> runs) {
    std::vector<std::size_t> samples;
    std::set_union(a.samples.begin(), a.samples.end(), b.samples.begin(), b.samples.end(),
                   std::back_inserter(samples));
    return withBreaks(std::move(samples), runs);
}

} // namespace tarnly::track
