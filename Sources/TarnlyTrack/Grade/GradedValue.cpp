#include "TarnlyTrack/Grade/GradedValue.hpp"

#include <algorithm>
#include <utility>

#include "TarnlyTrack/Grade/Approach.hpp"

namespace tarnly::track {
namespace {

GradedValue recorded(const GradedFlight& flight, std::string name, std::string unit, Quantity quantity) {
    const auto value = [&log = flight.log(), quantity](std::size_t sample) {
        return log.value(quantity, sample);
    };
    return {std::move(name), std::move(unit), value};
}

GradedValue held(GradedValue value, const Tolerance& tolerance) {
    const auto feet = tolerance.feet.value_or(0);
    const auto within = tolerance.withinFeet.value_or(0);
    value.least = feet - within;
    value.most = feet + within;
    return value;
}

/// To the left and to the right.
GradedValue bank(const GradedFlight& flight, double most) {
    auto value = recorded(flight, "bank", "°", Quantity::bankDeg);
    value.least = -most;
    value.most = most;
    return value;
}

std::vector<GradedValue> ofApproach(const GradedFlight& flight, const Tolerance& tolerance) {
    std::vector<GradedValue> values;
    if (tolerance.bankDegrees) values.push_back(bank(flight, *tolerance.bankDegrees));
    for (auto& demand : approachDemands(flight, tolerance)) {
        const std::string name(demand.what);
        if (name == "bank") continue;
        // The least and the most of one value are one picture.
        auto found = std::ranges::find(values, name, &GradedValue::name);
        if (found == values.end())
            found = values.insert(found, {name, std::string(demand.unit), std::move(demand.value)});
        (demand.isLeast ? found->least : found->most) = demand.limit;
    }
    return values;
}

} // namespace

std::vector<GradedValue> gradedValues(const GradedFlight& flight, const Tolerance& tolerance) {
    const auto kind = std::ranges::find(toleranceKindNames, tolerance.kind) - toleranceKindNames.begin();
    switch (static_cast<ToleranceKind>(kind)) {
        case ToleranceKind::altitudeHeld:
            return {held(recorded(flight, "altitude", "ft", Quantity::altitudeFt), tolerance)};
        case ToleranceKind::heightHeld:
            return {held(recorded(flight, "height above ground", "ft", Quantity::aglFt), tolerance)};
        case ToleranceKind::bankNotExceeded:
            return {bank(flight, tolerance.bankDegrees.value_or(0))};
        case ToleranceKind::stableAt:
            return ofApproach(flight, tolerance);
        case ToleranceKind::timeBetween:
            break;
    }
    return {};
}

} // namespace tarnly::track
