#include "TarnlyTrack/Export/Track.hpp"

namespace tarnly::track {

Track trackOf(const FlightLog& log, std::optional<Quantity> height) {
    Track track;
    for (std::size_t i = 0; i < log.size(); ++i) {
        const bool isOnIt = log.position(i) && (!height || log.value(*height, i));
        if (!isOnIt) continue;
        const bool isFirst =
            track.samples.empty() || isGap(log.elapsedSeconds(track.samples.back()), log.elapsedSeconds(i));
        if (isFirst) track.parts.push_back({track.samples.size(), track.samples.size()});
        track.samples.push_back(static_cast<std::uint32_t>(i));
        track.parts.back().end = track.samples.size();
    }
    return track;
}

} // namespace tarnly::track
