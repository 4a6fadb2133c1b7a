#include "TarnlyTrack/Log/LineReader.hpp"

#include <boost/json/value.hpp>
#include <cmath>
#include <string>
#include <vector>

#include "TarnlyPlatform/Json/JsonParser.hpp"
#include "TarnlyPlatform/Json/JsonRecord.hpp"
#include "TarnlyTrack/Log/PlainLine.hpp"

namespace tarnly::track {
namespace {

using boost::json::object;
using boost::json::value;

double finiteNumber(const value& json) {
    double number = 0;
    readJson(json, number);
    if (!std::isfinite(number)) throw JsonError("infinite");
    return number;
}

/// A list with a number in it that overflows says nothing of any engine.
void readList(const value& json, std::vector<double>& numbers) {
    numbers.clear();
    for (const auto& element : jsonArray(json))
        numbers.push_back(finiteNumber(element));
}

void readValue(const value& json, const FieldPlace& place, LogSample& sample) {
    switch (place.kind) {
        case FieldPlace::Kind::number:
            sample.numbers[place.index] = finiteNumber(json);
            break;
        case FieldPlace::Kind::boolean: {
            bool isOn = false;
            readJson(json, isOn);
            sample.switches[place.index] = isOn;
            break;
        }
        case FieldPlace::Kind::list:
            readList(json, sample.levers[place.index]);
            sample.hasLever[place.index] = true;
            break;
    }
}

bool isUnknown(const LogSample& sample, Quantity quantity) {
    return std::isnan(sample.numbers[static_cast<std::size_t>(quantity)]);
}

/// Returns how many values were left out.
std::size_t readSample(const object& json, LogSample& sample) {
    std::size_t leftOut = 0;
    sample.clear();
    for (const auto& place : fieldPlaces) {
        const auto* const found = json.if_contains(place.key);
        if (found == nullptr || found->is_null()) continue;
        try {
            readValue(*found, place, sample);
        } catch (const JsonError&) {
            ++leftOut;
        }
    }
    return leftOut;
}

/// Throws `JsonError` for one without its sample.
std::size_t readSampleLine(const object& line, LogSample& sample) {
    const auto* const found = line.if_contains("sample");
    if (found == nullptr) throwMissingKey("sample");
    return readSample(jsonObject(*found), sample);
}

} // namespace

LineReader::Kind LineReader::read(std::string_view line) {
    leftOutValues_ = 0;
    if (readPlainSample(line, sample_)) return judgeSample();
    try {
        const auto json = parseJson(line, NonFinite::kept);
        const auto& members = jsonObject(json);
        std::string kind;
        readField(members, "kind", kind);
        if (kind == "sample") {
            leftOutValues_ = readSampleLine(members, sample_);
            return judgeSample();
        }
        if (kind != "fired") return Kind::other;
        readField(members, "fired", fired_);
        return std::isfinite(fired_.elapsedSeconds) ? Kind::fired : Kind::unreadable;
    } catch (const JsonError&) {
        return Kind::unreadable;
    }
}

LineReader::Kind LineReader::judgeSample() const {
    return isUnknown(sample_, Quantity::elapsedSeconds) ? Kind::unreadable : Kind::sample;
}

} // namespace tarnly::track
