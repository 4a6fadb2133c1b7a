#pragma once

#include "TarnlyCore/Flight/SimBackend.hpp"
#include "TarnlyXPlane/Link/ValueCache.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"

namespace tarnly {

/// The aircraft state from what is cached, without waiting. What has no value, is no number any more, or is
/// not in the catalogue is absent; a missing altitude is 0, and said to be unknown. A number counts as a list
/// of one where a list is expected.
SampleObservation readTrackSample(const IdsByName& datarefIds, const ValueCache& values);

} // namespace tarnly
