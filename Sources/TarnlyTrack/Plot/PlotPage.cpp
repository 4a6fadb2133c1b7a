#include "TarnlyTrack/Plot/PlotPage.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "TarnlyPlatform/Json/JsonWriter.hpp"
#include "TarnlyTrack/Plot/PlotTemplate.hpp"

namespace tarnly::track {
namespace {

constexpr std::size_t columnsOfPage = 8192;
constexpr std::size_t mostColumns = 4096;
constexpr double timeUnit = 0.01;
constexpr double degreeUnit = 1e-6;
constexpr double gradedUnit = 0.01;

void writeSteps(JsonWriter& json, std::string_view key, const std::vector<double>& values, double unit) {
    json.key(key);
    json.beginArray();
    std::int64_t before = 0;
    for (const double value : values) {
        const auto whole = static_cast<std::int64_t>(std::llround(value / unit));
        json.integer(whole - before);
        before = whole;
    }
    json.endArray();
}

void writeBreaks(JsonWriter& json, const std::vector<std::size_t>& breaks) {
    json.key("breaks");
    json.beginArray();
    for (const auto place : breaks)
        json.integer(static_cast<std::int64_t>(place));
    json.endArray();
}

void writeLine(JsonWriter& json, const PlotLine& line, double unit) {
    json.beginObject();
    writeSteps(json, "at", line.at, timeUnit);
    writeSteps(json, "value", line.value, unit);
    json.key("unit");
    json.number(unit);
    writeBreaks(json, line.breaks);
    json.endObject();
}

void writeLines(JsonWriter& json, const PlotFlight& flight) {
    json.key("lines");
    json.beginObject();
    for (std::size_t i = 0; i < plotKeys.size(); ++i) {
        if (flight.lines[i].empty()) continue;
        json.key(plotKeys[i].key);
        json.beginArray();
        for (const auto& line : flight.lines[i])
            writeLine(json, line, plotKeys[i].unit);
        json.endArray();
    }
    json.endObject();
}

void writeTrack(JsonWriter& json, const PlotTrack& track) {
    json.key("track");
    json.beginObject();
    writeSteps(json, "at", track.at, timeUnit);
    writeSteps(json, "lat", track.lat, degreeUnit);
    writeSteps(json, "lon", track.lon, degreeUnit);
    writeBreaks(json, track.breaks);
    json.endObject();
}

void writeStretches(JsonWriter& json, std::string_view key, const std::vector<PlotStretch>& stretches) {
    json.key(key);
    json.beginArray();
    for (const auto& [from, to] : stretches) {
        json.beginArray();
        json.number(from);
        json.number(to);
        json.endArray();
    }
    json.endArray();
}

void writeText(JsonWriter& json, std::string_view key, const std::string& text) {
    json.key(key);
    json.string(text);
}

void writeNumber(JsonWriter& json, std::string_view key, const std::optional<double>& value) {
    if (!value) return;
    json.key(key);
    json.number(*value);
}

void writeTriggers(JsonWriter& json, const std::vector<PlotTrigger>& triggers) {
    json.key("fired");
    json.beginArray();
    for (const auto& trigger : triggers) {
        json.beginObject();
        writeText(json, "id", trigger.id);
        writeText(json, "action", trigger.action);
        writeNumber(json, "at", trigger.at);
        json.endObject();
    }
    json.endArray();
}

void writeTrial(JsonWriter& json, const PlotTrial& trial) {
    json.key("trial");
    json.beginObject();
    writeText(json, "script", trial.script);
    writeTriggers(json, trial.fired);
    json.key("missed");
    json.beginArray();
    for (const auto& miss : trial.missed) {
        json.beginObject();
        writeText(json, "id", miss.id);
        writeText(json, "words", miss.words);
        writeNumber(json, "at", miss.at);
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

void writeBand(JsonWriter& json, const PlotBand& permitted) {
    writeNumber(json, "least", permitted.least);
    writeNumber(json, "most", permitted.most);
}

void writeGrade(JsonWriter& json, const PlotGrade& grade) {
    json.beginObject();
    writeText(json, "title", grade.title);
    writeText(json, "verdict", grade.verdict);
    writeText(json, "words", grade.words);
    writeNumber(json, "worst", grade.worst);
    json.key("values");
    json.beginArray();
    for (const auto& value : grade.values) {
        json.beginObject();
        writeText(json, "name", value.name);
        writeText(json, "unit", value.unit);
        writeBand(json, value.permitted);
        json.key("line");
        writeLine(json, value.line, gradedUnit);
        json.endObject();
    }
    json.endArray();
    if (grade.tookSeconds) {
        json.key("took");
        json.beginObject();
        writeNumber(json, "seconds", grade.tookSeconds);
        writeBand(json, grade.permittedSeconds);
        json.endObject();
    }
    json.endObject();
}

void writeFlight(JsonWriter& json, const PlotFlight& flight) {
    json.beginObject();
    writeText(json, "name", flight.name);
    if (flight.start) writeText(json, "start", *flight.start);
    writeNumber(json, "seconds", flight.seconds);
    json.key("samples");
    json.integer(static_cast<std::int64_t>(flight.samples));
    writeNumber(json, "distance_nm", flight.distanceNm);
    writeNumber(json, "highest_ft", flight.highestFt);
    writeStretches(json, "gaps", flight.gaps);
    writeStretches(json, "frozen", flight.frozen);
    writeLines(json, flight);
    writeTrack(json, flight.track);
    writeTriggers(json, flight.fired);
    if (flight.trial) writeTrial(json, *flight.trial);
    if (!flight.grades.empty()) {
        json.key("grades");
        json.beginArray();
        for (const auto& grade : flight.grades)
            writeGrade(json, grade);
        json.endArray();
    }
    json.endObject();
}

/// JSON has `<` in strings only, and reads it back from this.
std::string withoutMarkup(const std::string& json) {
    std::string result;
    result.reserve(json.size());
    for (const char character : json) {
        if (character == '<') {
            result += "\\u003c";
        } else {
            result += character;
        }
    }
    return result;
}

} // namespace

std::size_t plotColumns(std::size_t flights) {
    return std::min(mostColumns, columnsOfPage / std::max<std::size_t>(flights, 1));
}

std::string plotJson(const std::vector<PlotFlight>& flights) {
    JsonWriter json;
    json.beginObject();
    json.key("flights");
    json.beginArray();
    for (const auto& flight : flights)
        writeFlight(json, flight);
    json.endArray();
    json.endObject();
    return withoutMarkup(json.take());
}

std::string plotPage(const std::vector<PlotFlight>& flights) {
    std::string page(plotTemplate());
    page.replace(page.find(plotPlaceholder), plotPlaceholder.size(), plotJson(flights));
    return page;
}

} // namespace tarnly::track
