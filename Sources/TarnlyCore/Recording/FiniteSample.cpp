#include "TarnlyCore/Recording/FiniteSample.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>
#include <vector>

namespace tarnly {
namespace {

// An overload for each type of the table of fields: a field of another type does not compile until it has
// its own.

bool isFinite(bool) { return true; }

bool isFinite(double value) { return std::isfinite(value); }

bool isFinite(const std::vector<double>& values) {
    return std::ranges::all_of(values, [](double value) { return std::isfinite(value); });
}

template <typename T>
void clean(std::optional<T>& value) {
    if (value && !isFinite(*value)) value.reset();
}

void clean(double& value) {
    if (!isFinite(value)) value = 0;
}

} // namespace

TrackSample withoutNonFinite(TrackSample sample) {
    std::apply([&](const auto&... fields) { (clean(sample.*fields.member), ...); }, fieldsOf<TrackSample>());
    return sample;
}

} // namespace tarnly
