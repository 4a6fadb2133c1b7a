#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TarnlyClient/Lesson/LessonFlight.hpp"

namespace tarnly::client {

/// What a lesson's table shows beside the flight. Plain values.
struct LessonView {
    std::string lesson;
    /// How it stands with the companion: "connected".
    std::string connection;
    /// Since the recording was started.
    double runningSeconds = 0;
    /// What ends the lesson: "q ends it".
    std::string end;
    /// How wide the terminal is, and how high.
    std::size_t columns = 80;
    std::size_t rows = 24;
};

/// What a trigger waits for, in one clause: "through 500 ft AGL, descending".
std::string conditionText(const ScriptTrigger& trigger);

/// The table, line by line, none wider and not more of them than the terminal has. It shows the flight's last
/// sample, what fired last, and what waits; "-" stands for what is not known.
std::vector<std::string> lessonTable(const LessonView& view, const LessonFlight& flight);

} // namespace tarnly::client
