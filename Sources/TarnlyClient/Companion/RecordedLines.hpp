#pragma once

#include <vector>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"

namespace tarnly::client {

/// Samples and fired triggers in the order in which the recording's log has them: each trigger after the
/// sample on which it fired.
std::vector<LogLine> linesInLogOrder(const RecordedFlight& recorded);

} // namespace tarnly::client
