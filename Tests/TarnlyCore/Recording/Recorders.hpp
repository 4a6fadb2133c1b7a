#pragma once

#include <boost/asio/io_context.hpp>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "Support/RunTask.hpp"
#include "TarnlyCore/Recording/CatchUpWriter.hpp"
#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyCore/Recording/Recordings.hpp"
#include "TarnlyPlatform/Json/JsonParser.hpp"

namespace tarnly::test {

/// What fires at that time: triggers of these ids, whose action is to speak.
inline FiredTriggers firing(double elapsedSeconds, const std::vector<std::string>& ids) {
    std::vector<ArmedTrigger> triggers;
    std::vector<TriggerIndex> indices;
    for (const auto& id : ids) {
        indices.push_back(static_cast<TriggerIndex>(triggers.size()));
        triggers.push_back({id, {}, {}, "speak", {}});
    }
    const FixResolver noFix = [](const std::string&) { return std::nullopt; };
    return {std::make_shared<const ArmedScript>(std::move(triggers), noFix), std::move(indices),
            TriggerSample{.elapsed = elapsedSeconds}};
}

/// Records the sample, on which triggers of these ids fire.
inline void record(FlightRecorder& recording, TrackSample sample,
                   const std::vector<std::string>& ids = {"gear-check"}) {
    const auto fire = [&](const TrackSample& recorded) { return firing(recorded.elapsedSeconds, ids); };
    recording.recordSample(std::move(sample), std::nullopt, fire);
}

/// What a client gets that catches up now.
inline RecordedFlight catchUp(const FlightRecorder& recording, std::optional<double> since = std::nullopt) {
    CatchUpWriter pieces(recording.snapshot(), since);
    JsonWriter text;
    pieces.writeUpTo(std::numeric_limits<std::size_t>::max(), text);
    return decodeJson<RecordedFlight>(parseJson(text.take()));
}

/// Waits until the log holds all that was recorded.
inline void waitUntilWritten(FlightRecorder& recording) {
    boost::asio::io_context io;
    runTask(io, recording.written());
}

} // namespace tarnly::test
