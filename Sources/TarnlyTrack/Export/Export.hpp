#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Output/TextSink.hpp"
#include "TarnlyTrack/Output/Words.hpp"

/// The formats that recordings are made into, one function each. docs/tracks.md says what each has.
///
/// They write as they go, so that a day's flight takes no more memory than its columns. Altitudes are
/// indicated ones everywhere, and what is worked out from positions is named as derived. No line goes across
/// a gap.
namespace tarnly::track {

/// What is exported. The log outlives it.
struct ExportedFlight {
    const FlightLog& log;
    /// When the recording was begun.
    Moment start;
    /// What the flight is called, well-formed UTF-8.
    std::string name;
    /// As the person has named it, likewise.
    std::optional<std::string> aircraft;
    /// Is told now and then how many of all samples are done; may be empty.
    std::function<void(std::size_t done, std::size_t all)> progress{};

    /// Calls `progress`, where it is time to.
    void tell(std::size_t done) const {
        constexpr std::size_t every = 4096;
        if (progress && done % every == 0) progress(done, log.size());
    }

    Moment momentAt(std::size_t sample) const { return momentOf(start, log.elapsedSeconds(sample)); }
};

// Each throws `TrackError` when the sink does not take it.

/// GPX 1.1: fired triggers as waypoints, a track with a segment from gap to gap.
void exportGpx(const ExportedFlight& flight, TextSink& sink);

/// KML 2.2: the line at its indicated altitude, the line above ground, the fired triggers.
void exportKml(const ExportedFlight& flight, TextSink& sink);

/// RFC 4180: one record a sample, with all that was recorded and what is derived.
void exportCsv(const ExportedFlight& flight, TextSink& sink);

/// RFC 7946: the track, and the fired triggers as points.
void exportGeoJson(const ExportedFlight& flight, TextSink& sink);

} // namespace tarnly::track
