#pragma once

#include <cstddef>
#include <string_view>

#include "TarnlyCore/Flight/TrackSample.hpp"
#include "TarnlyTrack/Log/LogSample.hpp"

namespace tarnly::track {

/// Reads the lines of a log one by one, each by itself. For one thread at a time.
class LineReader {
  public:
    enum class Kind {
        sample,
        fired,
        /// A log line of a kind that a later version may have brought.
        other,
        /// No log line, or one without what its kind promises.
        unreadable
    };

    /// `line` is without its line feed.
    Kind read(std::string_view line);

    /// Of the last line, when that was a sample; the caller may change it.
    LogSample& sample() { return sample_; }
    /// Of the last line, when that was a trigger that fired.
    const FiredTriggerEvent& fired() const { return fired_; }
    /// How many values of the last line were left out, because the format has none such: numbers that
    /// overflow, values of another type. Of a line that cannot be read it means nothing.
    std::size_t leftOutValues() const { return leftOutValues_; }

  private:
    Kind judgeSample() const;

    LogSample sample_;
    FiredTriggerEvent fired_;
    std::size_t leftOutValues_ = 0;
};

} // namespace tarnly::track
