#include "TarnlyClient/Lesson/LessonTable.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "TarnlyCore/Protocol/ScriptTriggerMapper.hpp"
#include "TarnlyPlatform/Base/Columns.hpp"
#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Base/TimeText.hpp"

namespace tarnly::client {
namespace {

constexpr std::size_t mostFired = 4;
constexpr std::size_t mostWaiting = 5;

/// How many of them to show: a line that says "and 1 more" would take the place of that one.
std::size_t shownOf(std::size_t count, std::size_t most) { return count <= most + 1 ? count : most; }

std::string numberText(double value) {
    std::string text;
    appendNumber(text, value);
    return text;
}

/// A whole number, without the sign of a rounded 0.
std::string wholeText(double value) { return numberText(std::round(value) + 0.0); }

std::string withUnit(const std::optional<double>& value, const std::string& unit) {
    return value ? wholeText(*value) + unit : "-";
}

std::string sided(const std::optional<double>& value, const std::string& positive,
                  const std::string& negative) {
    if (!value) return "-";
    const auto rounded = std::round(*value);
    const auto& side = rounded > 0 ? positive : negative;
    return numberText(std::abs(rounded)) + "°" + (rounded == 0 ? "" : " " + side);
}

std::string gearText(const std::optional<bool>& isDown) {
    if (!isDown) return "-";
    return *isDown ? "down" : "up";
}

/// Cut where the terminal would begin another line, which a table that is redrawn in place cannot have.
std::string cut(std::string text, std::size_t columns) {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isContinuation(text[at])) continue;
        if (++width > columns) return text.substr(0, at);
    }
    return text;
}

std::string row(const std::string& head, const std::string& text) { return "  " + padded(head, 10) + text; }

std::string climb(const TriggerCondition& condition) {
    return condition.climbing.value_or(false) ? ", climbing" : ", descending";
}

void addValues(std::vector<std::string>& lines, const LessonFlight& flight) {
    const auto sample = flight.lastSample().value_or(TrackSample{});
    const bool hasSample = flight.lastSample().has_value();
    constexpr std::size_t column = 20;
    const auto pair = [&](const std::string& head, const std::string& value, const std::string& secondHead,
                          const std::string& second) {
        lines.push_back(row(head, padded(value, column)) + padded(secondHead, 8) + second);
    };
    const auto altitude = hasSample ? std::optional(sample.altitudeFt) : std::nullopt;
    const auto flaps = sample.flapRatio ? std::optional(*sample.flapRatio * 100) : std::nullopt;
    pair("altitude", withUnit(altitude, " ft"), "height", withUnit(sample.aglFt, " ft AGL"));
    pair("bank", sided(sample.bankDeg, "right", "left"), "pitch", sided(sample.pitchDeg, "up", "down"));
    pair("gear", gearText(sample.gearDown), "flaps", withUnit(flaps, " %"));
    lines.push_back(row("speed", withUnit(flight.groundSpeedKts(), " kt over ground")));
}

void addFired(std::vector<std::string>& lines, const LessonFlight& flight, std::size_t most) {
    const auto fired = flight.fired();
    const auto shown = shownOf(fired.size(), most);
    std::string head = "fired";
    if (fired.empty()) lines.push_back(row(head, "-"));
    if (shown < fired.size())
        lines.push_back(row(std::exchange(head, ""), std::to_string(fired.size() - shown) + " earlier"));
    for (auto index = fired.size() - shown; index < fired.size(); ++index) {
        const auto& event = fired[index];
        lines.push_back(row(std::exchange(head, ""),
                            padded(timeText(event.elapsedSeconds), 8) + printable(event.triggerId)));
    }
}

void addWaiting(std::vector<std::string>& lines, const LessonFlight& flight, std::size_t most) {
    const auto waiting = flight.waiting();
    const auto shown = shownOf(waiting.size(), most);
    std::size_t width = 0;
    for (std::size_t index = 0; index < shown; ++index)
        width = std::max(width, widthOf(printable(waiting[index]->id)));
    std::string head = "next";
    if (waiting.empty()) lines.push_back(row(head, "nothing: all have fired"));
    for (std::size_t index = 0; index < shown; ++index) {
        const auto& trigger = *waiting[index];
        lines.push_back(
            row(std::exchange(head, ""), padded(printable(trigger.id), width + 2) + conditionText(trigger)));
    }
    if (shown < waiting.size())
        lines.push_back(row(head, "and " + std::to_string(waiting.size() - shown) + " more"));
}

} // namespace

std::string conditionText(const ScriptTrigger& trigger) {
    const auto condition = ScriptTriggerMapper::toCondition(trigger.conditionKind, trigger.condition);
    const auto feet = numberText(condition.feet.value_or(0));
    const auto seconds = numberText(condition.seconds.value_or(0)) + " s after ";
    switch (condition.kind) {
        case TriggerConditionKind::reachesFix:
            return "within " + numberText(condition.withinNm.value_or(0)) + " nm of " +
                   printable(condition.fix.value_or("-"));
        case TriggerConditionKind::crossesAgl:
            return "through " + feet + " ft AGL" + climb(condition);
        case TriggerConditionKind::crossesAltitude:
            return "through " + feet + " ft indicated" + climb(condition);
        case TriggerConditionKind::afterGearDown:
            return seconds + "the gear went down";
        case TriggerConditionKind::afterStart:
            return "at " + timeText(condition.seconds.value_or(0));
        case TriggerConditionKind::afterTrigger:
            return seconds + printable(condition.afterTriggerId.value_or("-"));
    }
    return {};
}

std::vector<std::string> lessonTable(const LessonView& view, const LessonFlight& flight) {
    // A table that is higher than the terminal could not be gone back over: the lists give way.
    constexpr std::size_t others = 10;
    const auto room = view.rows > others ? view.rows - others : 2;
    const auto most = [&](std::size_t wanted) {
        return std::min(wanted, std::max<std::size_t>(1, room / 2));
    };
    std::vector<std::string> lines;
    lines.push_back(printable(view.lesson) + "  " + timeText(view.runningSeconds) + "  " + view.connection);
    addValues(lines, flight);
    addFired(lines, flight, most(mostFired));
    addWaiting(lines, flight, most(mostWaiting));
    lines.push_back(row("", view.end));
    if (view.rows > 1 && lines.size() >= view.rows) lines.resize(view.rows - 1);
    for (auto& line : lines)
        line = cut(std::move(line), view.columns > 1 ? view.columns - 1 : 1);
    return lines;
}

} // namespace tarnly::client
