#pragma once

#include <map>
#include <string>
#include <utility>

#include "TarnlyCore/Protocol/Messages.hpp"
#include "TarnlyCore/Recording/RecordingLog.hpp"

/// What the tests of lessons fly.
namespace tarnly::test {

inline ScriptTrigger trigger(const std::string& id, const std::string& kind,
                             std::map<std::string, JsonScalar> condition) {
    return {id, kind, std::move(condition), "speak", {}};
}

inline LoadScriptRequest script() {
    return {
        {trigger("welcome", "after_start", {{"seconds", JsonScalar{0.0}}}),
         trigger("final", "crosses_agl", {{"feet", JsonScalar{500.0}}, {"climbing", JsonScalar{false}}}),
         trigger("around", "crosses_agl", {{"feet", JsonScalar{1000.0}}, {"climbing", JsonScalar{true}}})}};
}

/// North of 47 degrees, `lat` degrees and `aglFt` feet up.
inline LogLine sample(double elapsed, double lat = 0, double aglFt = 900) {
    TrackSample result;
    result.elapsedSeconds = elapsed;
    result.lat = 47 + lat;
    result.lon = 8;
    result.altitudeFt = 1400 + aglFt;
    result.aglFt = aglFt;
    return LogLine::of(result);
}

inline LogLine fired(const std::string& id, double elapsed) { return LogLine::of({id, elapsed, "speak"}); }

} // namespace tarnly::test
