#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TarnlyTrack/Log/FlightLog.hpp"
#include "TarnlyTrack/Log/LineReader.hpp"

namespace tarnly::track {

/// What could not be done with a file; the text is for the person, and names the file.
class TrackError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Makes a `FlightLog` of a log's bytes, as they come. docs/recording-format.md has the rules. For one thread
/// at a time.
class FlightLogReader {
  public:
    /// The next bytes, cut anywhere.
    void add(std::string_view bytes);

    /// After the last bytes. Leaves the reader empty.
    FlightLog finish();

  private:
    void addLine(std::string_view line);
    void addSample();
    /// Keeps the beginning of a line whose end has not come.
    void keep(std::string_view part);

    LineReader lines_;
    FlightLog log_;
    std::string begun_;
    /// The line that has begun is longer than any log line, and will be passed over.
    bool isTooLong_ = false;
};

/// Is told how many bytes of the file have been read, and how many it has.
using ReadProgress = std::function<void(std::size_t done, std::size_t size)>;

/// Reads a file from its beginning to its present end, in pieces. Throws `TrackError` when it cannot be read.
FlightLog readFlightLog(const std::filesystem::path& file, const ReadProgress& progress = {});

/// All of a small file that a person has written. Throws `TrackError` when it cannot be read.
std::string readText(const std::filesystem::path& file);

} // namespace tarnly::track
