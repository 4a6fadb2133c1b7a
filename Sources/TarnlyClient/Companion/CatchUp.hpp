#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"

namespace tarnly::client {

// How to read the answers to `catch_up`: in which order things happened, and what is new.

/// Samples and fired triggers in the order in which the recording's log has them: each trigger after the
/// sample on which it fired.
std::vector<LogLine> linesInLogOrder(const RecordedFlight& recorded);

/// Where a client stands in the recording that it follows, without gap, duplicate or mix-up.
///
/// Each time it asks for its last sample once more, together with all that came since. So an answer has
/// to begin with what is known already. Where it does not, another recording has begun: its clock and
/// memory start anew, and nothing else on the wire tells. To ask for the last sample again also brings the
/// triggers that fired on it and were not recorded yet when it was first asked for.
///
/// A plain value; not for use by several threads at once.
class CatchUpCursor {
  public:
    /// What `catch_up` is to be asked for next: what lies after so many seconds, or, when absent, everything.
    std::optional<double> since() const;

    /// Takes the answer to that, and returns what is new in it. Absent when the answer is of another
    /// recording than the answers before: this one begins anew then, and the next question is for everything.
    std::optional<RecordedFlight> take(RecordedFlight answer);

  private:
    /// What the next answer has to begin with.
    RecordedFlight known_;
    std::size_t samples_ = 0;
};

} // namespace tarnly::client
