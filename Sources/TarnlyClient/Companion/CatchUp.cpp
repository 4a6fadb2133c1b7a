#include "TarnlyClient/Companion/CatchUp.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

namespace tarnly::client {
namespace {

template <typename T>
bool beginsWith(const std::vector<T>& all, const std::vector<T>& beginning) {
    return all.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), all.begin());
}

template <typename T>
std::vector<T> from(std::vector<T>& all, std::size_t first) {
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(first);
    return {std::make_move_iterator(begin), std::make_move_iterator(all.end())};
}

template <typename T>
std::vector<T> after(double since, const std::vector<T>& all) {
    std::vector<T> result;
    std::copy_if(all.begin(), all.end(), std::back_inserter(result),
                 [since](const T& element) { return element.elapsedSeconds > since; });
    return result;
}

} // namespace

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

std::optional<double> CatchUpCursor::since() const {
    // The very first sample may still carry the time of the recording before, when that was under way.
    if (samples_ < 2) return std::nullopt;
    return std::nextafter(known_.samples.back().elapsedSeconds, -std::numeric_limits<double>::infinity());
}

std::optional<RecordedFlight> CatchUpCursor::take(RecordedFlight answer) {
    if (!beginsWith(answer.samples, known_.samples) || !beginsWith(answer.fired, known_.fired)) {
        *this = CatchUpCursor();
        return std::nullopt;
    }
    const auto knownSamples = std::exchange(known_, answer);
    samples_ += answer.samples.size() - knownSamples.samples.size();
    if (const auto next = since()) known_ = {after(*next, known_.samples), after(*next, known_.fired)};
    return RecordedFlight{from(answer.samples, knownSamples.samples.size()),
                          from(answer.fired, knownSamples.fired.size())};
}

} // namespace tarnly::client
