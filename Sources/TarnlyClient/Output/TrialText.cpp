#include "TarnlyClient/Output/TrialText.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>
#include <vector>

#include "TarnlyClient/Output/ReadableText.hpp"
#include "TarnlyPlatform/Base/Columns.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"

namespace tarnly::client {
namespace {

struct FiringListing {
    std::string triggerId;
    std::string title;
    std::string actionKind;
    double elapsedSeconds = 0;
    std::optional<double> lat;
    std::optional<double> lon;

    static constexpr auto fields() {
        return std::tuple(field("trigger_id", &FiringListing::triggerId),
                          field("title", &FiringListing::title),
                          field("action_kind", &FiringListing::actionKind),
                          field("elapsed_s", &FiringListing::elapsedSeconds),
                          field("lat", &FiringListing::lat), field("lon", &FiringListing::lon));
    }
};

struct MissListing {
    std::string triggerId;
    std::string title;
    std::string words;
    std::optional<double> elapsedSeconds;
    std::optional<double> lat;
    std::optional<double> lon;

    static constexpr auto fields() {
        return std::tuple(field("trigger_id", &MissListing::triggerId), field("title", &MissListing::title),
                          field("words", &MissListing::words),
                          field("elapsed_s", &MissListing::elapsedSeconds), field("lat", &MissListing::lat),
                          field("lon", &MissListing::lon));
    }
};

struct TrialListing {
    std::string file;
    double durationSeconds = 0;
    std::vector<FiringListing> fired;
    std::vector<MissListing> missed;

    static constexpr auto fields() {
        return std::tuple(field("file", &TrialListing::file),
                          field("duration_s", &TrialListing::durationSeconds),
                          field("fired", &TrialListing::fired), field("missed", &TrialListing::missed));
    }
};

double duration(const track::FlightLog& log) {
    return log.size() == 0 ? 0 : log.elapsedSeconds(log.size() - 1);
}

std::string positionText(const std::optional<double>& lat, const std::optional<double>& lon) {
    return lat && lon ? numberText(*lat) + " " + numberText(*lon) : "-";
}

} // namespace

std::string trialText(const std::string& file, const track::Trial& trial) {
    auto text = printable(file) + ": " + std::to_string(trial.fired.size()) + " fired, " +
                std::to_string(trial.missed.size()) + " did not";
    std::size_t width = 0;
    for (const auto& fired : trial.fired)
        width = std::max(width, widthOf(printable(fired.triggerId)));
    for (const auto& missed : trial.missed)
        width = std::max(width, widthOf(printable(missed.triggerId)));
    for (const auto& fired : trial.fired) {
        text += "\n  fired   " + padded(printable(fired.triggerId), width) + "  at " +
                timeText(fired.elapsed) + "  " + positionText(fired.lat, fired.lon);
    }
    for (const auto& missed : trial.missed)
        text += "\n  missed  " + padded(printable(missed.triggerId), width) + "  " + missed.words;
    return text;
}

std::string trialJson(const std::string& file, const track::FlightLog& log, const track::Trial& trial) {
    TrialListing listing{wellFormedUtf8(file), duration(log), {}, {}};
    for (const auto& [id, title, kind, action, elapsed, lat, lon] : trial.fired) {
        listing.fired.push_back(
            {wellFormedUtf8(id), wellFormedUtf8(title), wellFormedUtf8(kind), elapsed, lat, lon});
    }
    for (const auto& missed : trial.missed) {
        MissListing miss{
            wellFormedUtf8(missed.triggerId), wellFormedUtf8(missed.title), missed.words, {}, {}, {}};
        if (missed.sample) {
            miss.elapsedSeconds = log.elapsedSeconds(*missed.sample);
            miss.lat = log.value(track::Quantity::lat, *missed.sample);
            miss.lon = log.value(track::Quantity::lon, *missed.sample);
        }
        listing.missed.push_back(std::move(miss));
    }
    return encodeJson(listing);
}

} // namespace tarnly::client
