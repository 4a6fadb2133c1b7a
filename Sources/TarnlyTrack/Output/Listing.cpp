#include "TarnlyTrack/Output/Listing.hpp"

#include <cstdint>
#include <optional>

#include "TarnlyPlatform/Base/Text.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyTrack/Log/GreatCircle.hpp"
#include "TarnlyTrack/Log/LogName.hpp"
#include "TarnlyTrack/Output/Words.hpp"

namespace tarnly::track {
namespace {

using Count = std::int64_t;

/// A recording as programs are told of it.
struct Recording {
    std::string file;
    std::optional<std::string> start;
    Count samples = 0;
    double lengthSeconds = 0;
    double distanceMeters = 0;
    std::optional<double> highestIndicatedFt;
    std::optional<double> highestAglFt;
    Count fired = 0;
    Count gaps = 0;
    double gapSeconds = 0;
    Count frozen = 0;
    double frozenSeconds = 0;
    bool hasTornEnd = false;
    Count unreadableLines = 0;
    Count unknownLines = 0;
    Count leftOutValues = 0;
    Count lackingAltitudes = 0;

    static constexpr auto fields() {
        return std::tuple(
            field("file", &Recording::file), field("start", &Recording::start),
            field("samples", &Recording::samples), field("length_s", &Recording::lengthSeconds),
            field("distance_m", &Recording::distanceMeters),
            field("highest_indicated_ft", &Recording::highestIndicatedFt),
            field("highest_agl_ft", &Recording::highestAglFt), field("fired", &Recording::fired),
            field("gaps", &Recording::gaps), field("gap_s", &Recording::gapSeconds),
            field("frozen", &Recording::frozen), field("frozen_s", &Recording::frozenSeconds),
            field("torn_end", &Recording::hasTornEnd), field("unreadable_lines", &Recording::unreadableLines),
            field("unknown_lines", &Recording::unknownLines),
            field("left_out_values", &Recording::leftOutValues),
            field("lacking_altitudes", &Recording::lackingAltitudes));
    }
};

struct ShownTrigger {
    std::string triggerId;
    std::string actionKind;
    double elapsedSeconds = 0;
    std::optional<std::string> time;
    std::optional<double> lat;
    std::optional<double> lon;
    std::optional<double> indicatedFt;
    std::optional<double> aglFt;

    static constexpr auto fields() {
        return std::tuple(
            field("trigger_id", &ShownTrigger::triggerId), field("action_kind", &ShownTrigger::actionKind),
            field("elapsed_s", &ShownTrigger::elapsedSeconds), field("time", &ShownTrigger::time),
            field("lat", &ShownTrigger::lat), field("lon", &ShownTrigger::lon),
            field("indicated_ft", &ShownTrigger::indicatedFt), field("agl_ft", &ShownTrigger::aglFt));
    }
};

/// A gap or a frozen stretch, by the times of the samples at its ends.
struct ShownStretch {
    double fromSeconds = 0;
    double toSeconds = 0;

    static constexpr auto fields() {
        return std::tuple(field("from_s", &ShownStretch::fromSeconds),
                          field("to_s", &ShownStretch::toSeconds));
    }
};

struct FullRecording {
    Recording recording;
    std::vector<ShownTrigger> triggers;
    std::vector<ShownStretch> gaps;
    std::vector<ShownStretch> frozen;

    static constexpr auto fields() {
        return std::tuple(field("recording", &FullRecording::recording),
                          field("triggers", &FullRecording::triggers), field("gaps", &FullRecording::gaps),
                          field("frozen", &FullRecording::frozen));
    }
};

Recording recordingOf(const std::filesystem::path& file, const FlightSummary& summary) {
    Recording result;
    result.file = wellFormedUtf8(file.string());
    if (const auto start = startByName(file)) result.start = isoTime(*start);
    result.samples = static_cast<Count>(summary.samples);
    result.lengthSeconds = summary.lengthSeconds;
    result.distanceMeters = summary.distanceMeters;
    result.highestIndicatedFt = summary.highestIndicatedFt;
    result.highestAglFt = summary.highestAglFt;
    result.fired = static_cast<Count>(summary.firedTriggers);
    result.gaps = static_cast<Count>(summary.gaps);
    result.gapSeconds = summary.gapSeconds;
    result.frozen = static_cast<Count>(summary.frozenStretches);
    result.frozenSeconds = summary.frozenSeconds;
    result.hasTornEnd = summary.faults.hasTornEnd;
    result.unreadableLines = static_cast<Count>(summary.faults.unreadableLines);
    result.unknownLines = static_cast<Count>(summary.faults.unknownLines);
    result.leftOutValues = static_cast<Count>(summary.faults.leftOutValues);
    result.lackingAltitudes = static_cast<Count>(summary.faults.lackingAltitudes);
    return result;
}

std::vector<ShownStretch> gapsOf(const FlightLog& log) {
    std::vector<ShownStretch> result;
    std::optional<double> from;
    for (const auto& segment : log.segments()) {
        if (from) result.push_back({*from, log.elapsedSeconds(segment.begin)});
        from = log.elapsedSeconds(segment.end - 1);
    }
    return result;
}

std::vector<ShownStretch> frozenOf(const FlightLog& log) {
    std::vector<ShownStretch> result;
    for (const auto& stretch : log.frozen())
        result.push_back({log.elapsedSeconds(stretch.begin), log.elapsedSeconds(stretch.end - 1)});
    return result;
}

std::vector<ShownTrigger> triggersOf(const std::filesystem::path& file, const FlightLog& log) {
    const auto start = startByName(file);
    std::vector<ShownTrigger> result;
    for (const auto& fired : log.fired()) {
        ShownTrigger shown;
        shown.triggerId = fired.triggerId;
        shown.actionKind = fired.actionKind;
        shown.elapsedSeconds = fired.elapsedSeconds;
        if (start) shown.time = isoTime(momentOf(*start, fired.elapsedSeconds));
        if (fired.sample) {
            shown.lat = log.value(Quantity::lat, *fired.sample);
            shown.lon = log.value(Quantity::lon, *fired.sample);
            shown.indicatedFt = log.value(Quantity::altitudeFt, *fired.sample);
            shown.aglFt = log.value(Quantity::aglFt, *fired.sample);
        }
        result.push_back(std::move(shown));
    }
    return result;
}

std::string feetText(const std::optional<double>& feet) {
    return feet ? fixedText(*feet, 0) + " ft" : "- ft";
}

std::string distanceText(double meters) { return fixedText(meters / metersPerNauticalMile, 1) + " nm"; }

std::string startText(const std::filesystem::path& file) {
    const auto start = startByName(file);
    return start ? utcText(*start) + "  " + localText(*start) : "renamed: start not known";
}

std::string triggerLine(const ShownTrigger& trigger) {
    auto line = "  " + durationText(trigger.elapsedSeconds) + "  " + trigger.triggerId + " (" +
                trigger.actionKind + ")";
    if (trigger.lat && trigger.lon)
        line += " at " + fixedText(*trigger.lat, 5) + " " + fixedText(*trigger.lon, 5);
    line += ", " + feetText(trigger.indicatedFt) + " indicated, " + feetText(trigger.aglFt) + " above ground";
    return printable(line);
}

void addStretches(std::vector<std::string>& lines, const std::string& what,
                  const std::vector<ShownStretch>& stretches) {
    for (const auto& stretch : stretches) {
        lines.push_back("  " + durationText(stretch.fromSeconds) + "  " + what + " until " +
                        durationText(stretch.toSeconds));
    }
}

void addFault(std::string& text, std::size_t count, const std::string& one, const std::string& many) {
    if (count == 0) return;
    text += (text.empty() ? "" : ", ") + countText(count, one, many);
}

} // namespace

std::string faultsText(const LogFaults& faults) {
    std::string text;
    addFault(text, faults.unreadableLines, "unreadable line", "unreadable lines");
    addFault(text, faults.unknownLines, "line of an unknown kind", "lines of unknown kinds");
    addFault(text, faults.leftOutValues, "value left out", "values left out");
    addFault(text, faults.lackingAltitudes, "altitude missing", "altitudes missing");
    if (faults.hasTornEnd) text += text.empty() ? "torn end" : ", torn end";
    return text;
}

std::string listingLine(const std::filesystem::path& file, const FlightSummary& summary) {
    auto line = startText(file) + "  " + durationText(summary.lengthSeconds) + "  " +
                distanceText(summary.distanceMeters) + "  up to " + feetText(summary.highestIndicatedFt) +
                "  " + std::to_string(summary.firedTriggers) + " fired";
    if (summary.gaps > 0) line += "  " + countText(summary.gaps, "gap", "gaps");
    if (const auto faults = faultsText(summary.faults); !faults.empty()) line += "  " + faults;
    return line + "  " + printable(file.filename().string());
}

std::string listingJson(const std::filesystem::path& file, const FlightSummary& summary) {
    return encodeJson(recordingOf(file, summary));
}

std::vector<std::string> fullLines(const std::filesystem::path& file, const FlightLog& log) {
    const auto summary = summaryOf(log);
    std::vector<std::string> lines{
        "recording          " + printable(file.string()),
        "started            " + startText(file),
        "length             " + durationText(summary.lengthSeconds) + ", " +
            countText(summary.samples, "sample", "samples"),
        "distance           " + distanceText(summary.distanceMeters),
        "highest            " + feetText(summary.highestIndicatedFt) + " indicated, " +
            feetText(summary.highestAglFt) + " above ground",
        "triggers fired     " + std::to_string(summary.firedTriggers),
    };
    for (const auto& trigger : triggersOf(file, log))
        lines.push_back(triggerLine(trigger));
    lines.push_back("gaps               " + std::to_string(summary.gaps) + ", " +
                    durationText(summary.gapSeconds) + " in all");
    addStretches(lines, "nothing", gapsOf(log));
    lines.push_back("frozen             " + std::to_string(summary.frozenStretches) + ", " +
                    durationText(summary.frozenSeconds) + " in all");
    addStretches(lines, "unchanged", frozenOf(log));
    if (const auto faults = faultsText(summary.faults); !faults.empty())
        lines.push_back("the file has       " + faults);
    return lines;
}

std::string fullJson(const std::filesystem::path& file, const FlightLog& log) {
    return encodeJson(
        FullRecording{recordingOf(file, summaryOf(log)), triggersOf(file, log), gapsOf(log), frozenOf(log)});
}

} // namespace tarnly::track
