#pragma once

#include "TarnlyCore/Flight/TrackSample.hpp"

namespace tarnly {

/// The sample without its values that are not finite numbers, for which neither log nor wire has a form: such
/// a value is left out, a list with one among its elements as a whole; what every sample has is 0 instead.
TrackSample withoutNonFinite(TrackSample sample);

} // namespace tarnly
