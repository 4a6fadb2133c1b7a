#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/NumberText.hpp"
#include "TarnlyTrack/Grade/Grade.hpp"
#include "TarnlyTrack/Grade/ToleranceCheck.hpp"
#include "TarnlyTrack/Log/FlightLogReader.hpp"

/// Small recordings, line by line as in a log, and tolerances as in a file.
namespace tarnly::track::test {

inline std::string numberText(double value) {
    std::string text;
    appendNumber(text, value);
    return text;
}

/// A line with a sample; `fields` are further ones, `"agl_ft":500`. At no position, so that it is not frozen.
inline std::string sample(double elapsed, double altitude, const std::string& fields = "") {
    return R"({"kind":"sample","sample":{"elapsed_s":)" + numberText(elapsed) + R"(,"alt_ft":)" +
           numberText(altitude) + (fields.empty() ? "" : ",") + fields + "}}\n";
}

/// A line with a trigger that fired on the sample before.
inline std::string fired(const std::string& id, double elapsed) {
    return R"({"kind":"fired","fired":{"trigger_id":")" + id + R"(","elapsed_s":)" + numberText(elapsed) +
           R"(,"action_kind":"speak"}})" + "\n";
}

/// A sample a second from 0 on, with these altitudes.
inline std::string altitudes(const std::vector<double>& feet) {
    std::string lines;
    double elapsed = 0;
    for (const auto altitude : feet)
        lines += sample(elapsed++, altitude);
    return lines;
}

/// Samples from `begin` to `end`, one a second, at one place with the same values: frozen.
inline std::string still(double begin, double end) {
    std::string lines;
    for (auto elapsed = begin; elapsed <= end; ++elapsed) {
        lines += sample(elapsed, 1500, R"("lat":47,"lon":8,"agl_ft":1000,"bank_deg":0,"pitch_deg":0)");
    }
    return lines;
}

inline FlightLog logOf(std::string_view lines) {
    FlightLogReader reader;
    reader.add(lines);
    return reader.finish();
}

/// By one tolerance, of which `fields` are those beside the id.
inline Grade gradeOf(std::string_view lines, const std::string& fields) {
    const auto checked = readTolerances(R"([{"id":"it",)" + fields + "}]");
    if (!checked.findings.empty()) return {.words = checked.findings.front().text};
    return gradesOf(logOf(lines), checked.tolerances).front();
}

/// "met: farthest …"
inline std::string verdictOf(std::string_view lines, const std::string& fields) {
    const auto grade = gradeOf(lines, fields);
    return std::string(verdictWords(grade.verdict)) + ": " + grade.words;
}

} // namespace tarnly::track::test
