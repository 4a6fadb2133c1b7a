#include "TarnlyClient/Lesson/LessonFlight.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"
#include "TarnlyTrack/Log/GreatCircle.hpp"

namespace tarnly::client {
namespace {

/// Positions of two samples alone would make a speed that jumps about.
constexpr double speedSeconds = 4;
constexpr double metersASecondPerKnot = 1852.0 / 3600;

} // namespace

void LessonPart::take(const LogLine& line) {
    lines_ += encodeJson(line);
    lines_ += '\n';
    if (line.fired) fired_.push_back(*line.fired);
}

track::FlightLog LessonPart::log() const {
    track::FlightLogReader reader;
    reader.add(lines_);
    return reader.finish();
}

LessonFlight::LessonFlight(LoadScriptRequest script, std::optional<std::string> endTrigger)
    : script_(std::move(script)), endTrigger_(std::move(endTrigger)), parts_(1) {}

void LessonFlight::take(const LogLine& line) {
    parts_.back().take(line);
    if (line.sample) takeSample(*line.sample);
    isOver_ = isOver_ || (line.fired && endTrigger_ && line.fired->triggerId == *endTrigger_);
}

void LessonFlight::takeSample(const TrackSample& sample) {
    lastSample_ = sample;
    const bool isAfterGap =
        !lately_.empty() && track::isGap(lately_.back().elapsedSeconds, sample.elapsedSeconds);
    if (isAfterGap) lately_.clear();
    if (sample.lat && sample.lon) lately_.push_back({sample.elapsedSeconds, {*sample.lat, *sample.lon}});
    while (!lately_.empty() && lately_.front().elapsedSeconds < sample.elapsedSeconds - speedSeconds)
        lately_.pop_front();
}

void LessonFlight::beginAnew() {
    if (!parts_.back().isEmpty()) parts_.emplace_back();
    lastSample_.reset();
    lately_.clear();
}

void LessonFlight::replaceLast(const std::vector<LogLine>& lines) {
    parts_.back() = {};
    lately_.clear();
    for (const auto& line : lines)
        take(line);
}

std::vector<FiredTriggerEvent> LessonFlight::fired() const {
    std::vector<FiredTriggerEvent> result;
    for (const auto& part : parts_)
        std::ranges::copy(part.fired(), std::back_inserter(result));
    return result;
}

std::vector<const ScriptTrigger*> LessonFlight::waiting() const {
    const auto hasFired = [&](const std::string& id) {
        return std::ranges::any_of(parts_, [&](const LessonPart& part) {
            return std::ranges::find(part.fired(), id, &FiredTriggerEvent::triggerId) != part.fired().end();
        });
    };
    std::vector<const ScriptTrigger*> result;
    for (const auto& trigger : script_.triggers) {
        if (!hasFired(trigger.id)) result.push_back(&trigger);
    }
    return result;
}

std::optional<double> LessonFlight::groundSpeedKts() const {
    if (lately_.size() < 2) return std::nullopt;
    const auto& [firstAt, first] = lately_.front();
    const auto& [lastAt, last] = lately_.back();
    const double time = lastAt - firstAt;
    if (time < 1) return std::nullopt;
    return track::greatCircleMeters(first, last) / time / metersASecondPerKnot;
}

} // namespace tarnly::client
