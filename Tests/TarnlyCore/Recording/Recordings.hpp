#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TarnlyCore/Recording/RecordingLog.hpp"

namespace tarnly::test {

inline TrackSample sampleAt(double elapsedSeconds) {
    TrackSample sample;
    sample.elapsedSeconds = elapsedSeconds;
    sample.altitudeFt = 2500;
    return sample;
}

/// A sample as a twin gives it.
inline TrackSample fullSampleAt(double elapsedSeconds) {
    TrackSample sample = sampleAt(elapsedSeconds);
    sample.lat = 47.498723405812;
    sample.lon = 8.5217349872341;
    sample.altitudeFt = 1817.4520931244;
    sample.aglFt = 402.77610182762;
    sample.gearDown = true;
    sample.throttleRatio = {0.6512500047683716, 0.6487500071525574};
    sample.mixtureRatio = {1, 0.9812499880790710};
    sample.propRatio = {0.8999999761581421, 0.9037499427795410};
    sample.flapRatio = 0.3333333432674408;
    sample.gearRatio = 1;
    sample.bankDeg = -11.204583168029785;
    sample.pitchDeg = 3.1280009746551514;
    sample.autopilotOn = false;
    return sample;
}

inline FiredTriggerEvent firedAt(double elapsedSeconds, const std::string& id = "gear-check") {
    return {id, elapsedSeconds, "speak"};
}

/// A line as a log holds it.
inline std::string lineText(const LogLine& line) { return encodeJson(line) + "\n"; }

/// All that a reader gets from a log.
struct ReadLog {
    std::vector<LogLine> lines;
    std::size_t unreadableLines = 0;
    bool hasTornEnd = false;
};

inline ReadLog readLog(std::istream& in) {
    RecordingLogReader reader(in);
    ReadLog result;
    while (auto line = reader.next())
        result.lines.push_back(std::move(*line));
    result.unreadableLines = reader.unreadableLines();
    result.hasTornEnd = reader.hasTornEnd();
    return result;
}

inline ReadLog readLog(const std::string& text) {
    std::istringstream in(text);
    return readLog(in);
}

inline ReadLog readLogFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return readLog(in);
}

} // namespace tarnly::test
