#include "TarnlyClient/Companion/RecordedLines.hpp"

namespace tarnly::client {

std::vector<LogLine> linesInLogOrder(const RecordedFlight& recorded) {
    std::vector<LogLine> lines;
    lines.reserve(recorded.samples.size() + recorded.fired.size());
    auto event = recorded.fired.begin();
    const auto takeEventsWhile = [&](auto isDue) {
        for (; event != recorded.fired.end() && isDue(event->elapsedSeconds); ++event)
            lines.push_back(LogLine::of(*event));
    };
    for (const auto& sample : recorded.samples) {
        const double time = sample.elapsedSeconds;
        takeEventsWhile([time](double elapsed) { return elapsed < time; });
        lines.push_back(LogLine::of(sample));
        takeEventsWhile([time](double elapsed) { return elapsed == time; });
    }
    takeEventsWhile([](double) { return true; });
    return lines;
}

} // namespace tarnly::client
