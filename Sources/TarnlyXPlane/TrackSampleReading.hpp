#pragma once

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyXPlane/Link/ValueCache.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"

namespace tarnly {

/// The aircraft state from what is cached, without waiting. What has no value or is not in the catalogue is
/// absent; a missing altitude is 0. `elapsedSeconds` is 0.
TrackSample readTrackSample(const IdsByName& datarefIds, const ValueCache& values);

} // namespace tarnly
