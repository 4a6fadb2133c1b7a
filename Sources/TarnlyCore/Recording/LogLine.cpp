#include "TarnlyCore/Recording/LogLine.hpp"

#include <utility>

namespace tarnly {

LogLine LogLine::of(TrackSample sample) { return {std::string(sampleKind), std::move(sample), std::nullopt}; }

LogLine LogLine::of(FiredTriggerEvent event) {
    return {std::string(firedKind), std::nullopt, std::move(event)};
}

bool LogLine::isComplete() const {
    if (kind == sampleKind) return sample.has_value();
    if (kind == firedKind) return fired.has_value();
    return true;
}

} // namespace tarnly
