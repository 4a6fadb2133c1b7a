#include "TarnlyTrack/Log/FlightLogReader.hpp"

#include <cerrno>
#include <cmath>
#include <system_error>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Files/File.hpp"

namespace tarnly::track {
namespace {

/// Longer than any line that the companion writes, short of what would fill the memory.
constexpr std::size_t longestLine = std::size_t(1) << 20;

constexpr std::size_t pieceSize = std::size_t(256) << 10;

bool isBeyond(double value, double limit) { return std::abs(value) > limit; }

/// Takes positions away that no place on the globe has. Returns how many numbers it took.
std::size_t withoutStrayPosition(LogSample& sample) {
    auto& lat = sample.numbers[static_cast<std::size_t>(Quantity::lat)];
    auto& lon = sample.numbers[static_cast<std::size_t>(Quantity::lon)];
    const bool isStrayLat = isBeyond(lat, 90);
    const bool isStrayLon = isBeyond(lon, 180);
    if (isStrayLat) lat = unknown;
    if (isStrayLon) lon = unknown;
    return std::size_t(isStrayLat) + std::size_t(isStrayLon);
}

TrackError cannotRead(const std::filesystem::path& file, int error) {
    const auto why = error == 0 ? "it is no file" : std::generic_category().message(error);
    return TrackError(printable(file.string()) + " cannot be read: " + why);
}

template <typename Take>
void readPieces(const std::filesystem::path& file, const ReadProgress& progress, const Take& take) {
    errno = 0;
    const auto opened = File::open(file, File::Mode::read);
    if (!opened.isOpen()) throw cannotRead(file, errno);
    const auto size = opened.size().value_or(0);
    std::vector<char> piece(pieceSize);
    std::size_t done = 0;
    for (;;) {
        const auto count = opened.readSome(piece);
        if (!count) throw cannotRead(file, errno);
        if (*count == 0) return;
        take(std::string_view(piece.data(), *count));
        done += *count;
        if (progress) progress(done, size);
    }
}

} // namespace

void FlightLogReader::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const auto feed = bytes.find('\n');
        if (feed == std::string_view::npos) return keep(bytes);
        const auto line = bytes.substr(0, feed);
        bytes.remove_prefix(feed + 1);
        if (begun_.empty() && !isTooLong_) {
            addLine(line);
            continue;
        }
        keep(line);
        if (isTooLong_) {
            ++log_.faults.unreadableLines;
        } else {
            addLine(begun_);
        }
        begun_.clear();
        isTooLong_ = false;
    }
}

void FlightLogReader::keep(std::string_view part) {
    isTooLong_ = isTooLong_ || begun_.size() + part.size() > longestLine;
    if (isTooLong_) {
        begun_.clear();
    } else {
        begun_ += part;
    }
}

void FlightLogReader::addLine(std::string_view line) {
    switch (lines_.read(line)) {
        case LineReader::Kind::sample:
            addSample();
            break;
        case LineReader::Kind::fired:
            log_.append(FiredTrigger{lines_.fired().triggerId, lines_.fired().actionKind,
                                     lines_.fired().elapsedSeconds, std::nullopt});
            break;
        case LineReader::Kind::other:
            ++log_.faults.unknownLines;
            break;
        case LineReader::Kind::unreadable:
            ++log_.faults.unreadableLines;
            break;
    }
}

void FlightLogReader::addSample() {
    auto& sample = lines_.sample();
    log_.faults.leftOutValues += lines_.leftOutValues() + withoutStrayPosition(sample);
    const double altitude = sample.numbers[static_cast<std::size_t>(Quantity::altitudeFt)];
    if (std::isnan(altitude)) ++log_.faults.lackingAltitudes;
    log_.append(sample);
}

FlightLog FlightLogReader::finish() {
    // Without a line feed at its end a line is torn, unless it can be read all the same.
    if (!begun_.empty() || isTooLong_) {
        const auto unreadable = log_.faults.unreadableLines;
        if (!isTooLong_) addLine(begun_);
        log_.faults.hasTornEnd = isTooLong_ || log_.faults.unreadableLines > unreadable;
        log_.faults.unreadableLines = unreadable;
    }
    begun_.clear();
    isTooLong_ = false;
    return std::exchange(log_, {});
}

FlightLog readFlightLog(const std::filesystem::path& file, const ReadProgress& progress) {
    FlightLogReader reader;
    readPieces(file, progress, [&](std::string_view piece) { reader.add(piece); });
    return reader.finish();
}

std::string readText(const std::filesystem::path& file) {
    std::string text;
    readPieces(file, {}, [&](std::string_view piece) { text += piece; });
    return text;
}

} // namespace tarnly::track
