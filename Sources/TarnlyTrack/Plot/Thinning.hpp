#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

/// Which samples of a long flight are drawn. Plain functions on columns, one number a sample; from any
/// thread.
namespace tarnly::track {

/// Samples of one number are a run: a line leads from each to the next. Samples of `inNoRun` are not drawn.
using RunNumber = std::uint32_t;
constexpr RunNumber inNoRun = std::numeric_limits<RunNumber>::max();

/// The samples of a line to draw, in the order of time.
struct KeptSamples {
    std::vector<std::size_t> samples;
    /// Places in `samples` to which no line leads.
    std::vector<std::size_t> breaks;

    bool operator==(const KeptSamples&) const = default;
};

/// `runs` without the samples whose value is not known (NaN), which end a run.
std::vector<RunNumber> runsOfKnown(std::span<const RunNumber> runs, std::span<const double> values);

/// The part of a line that shows as much as the whole one, drawn in `columns` columns of pixels of the same
/// time: of each column and run the first and the last of the least and the greatest value, of each run its
/// ends, and all samples of `pinned`, which is sorted. What then lies between two samples of the same value,
/// all of it the same, is left out as well. A line of no more than two samples a column stays as it is.
///
/// `times` rise and are finite; `values` are known wherever `runs` has a run.
KeptSamples thinned(std::span<const double> times, std::span<const double> values,
                    std::span<const RunNumber> runs, std::span<const std::size_t> pinned,
                    std::size_t columns);

/// The samples of both, with breaks wherever `runs` has them.
KeptSamples united(const KeptSamples& a, const KeptSamples& b, std::span<const RunNumber> runs);

} // namespace tarnly::track
