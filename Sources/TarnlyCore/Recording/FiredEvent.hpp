#pragma once

#include <cstddef>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Script/FiredTriggers.hpp"

namespace tarnly {

/// The record of the trigger at `place` among those that fired on a sample.
inline FiredTriggerEvent eventOf(const FiredTriggers& fired, std::size_t place) {
    const auto& trigger = fired.trigger(place);
    return {trigger.id, fired.elapsed(), trigger.actionKind};
}

} // namespace tarnly
