#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

#include "TarnlyCore/Recording/FlightRecorder.hpp"
#include "TarnlyPlatform/Json/JsonWriter.hpp"

namespace tarnly {

/// Writes what stood recorded at one moment as the JSON of a `RecordedFlight`, in pieces, straight from the
/// shared memory of the recording: of a flight of a day no client needs more than the piece under way.
///
/// For one thread at a time, whichever.
class CatchUpWriter {
  public:
    /// What is after `since`, in seconds, strictly; all when it is absent.
    CatchUpWriter(FlightRecorder::Snapshot recorded, std::optional<double> since)
        : recorded_(std::move(recorded)), since_(since.value_or(-std::numeric_limits<double>::infinity())) {}

    /// Goes on until `writer` has `limit` bytes, a sample or a trigger more, or everything; whether it has
    /// everything.
    bool writeUpTo(std::size_t limit, JsonWriter& writer);

  private:
    enum class Stage { begin, samples, fired, end };

    bool writeSamples(std::size_t limit, JsonWriter& writer);
    bool writeFired(std::size_t limit, JsonWriter& writer);

    const FlightRecorder::Snapshot recorded_;
    const double since_;
    Stage stage_ = Stage::begin;
    SampleList::Snapshot::Cursor cursor_;
    TrackSample sample_;
    /// Of the samples on which something fired.
    std::size_t firing_ = 0;
    /// Of the triggers that fired on that sample.
    std::size_t place_ = 0;
};

} // namespace tarnly
