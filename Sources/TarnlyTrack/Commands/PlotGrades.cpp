#include "TarnlyTrack/Commands/PlotGrades.hpp"

#include <cmath>
#include <optional>
#include <utility>

#include "TarnlyTrack/Grade/Grade.hpp"
#include "TarnlyTrack/Grade/GradedValue.hpp"
#include "TarnlyTrack/Plot/Thinning.hpp"

namespace tarnly::track {
namespace {

/// As wide as the small pictures are.
constexpr std::size_t columns = 240;
/// Beyond it a number is nothing that an aircraft does, and no pixel either.
constexpr double largest = 1e9;

double drawable(std::optional<double> value) {
    return value && std::abs(*value) <= largest ? *value : unknown;
}

/// The value over the part that was judged, with breaks at gaps and where it is not known.
PlotLine lineOf(const GradedFlight& flight, const Grade& grade, const GradedValue& graded) {
    std::vector<double> times;
    std::vector<double> values;
    std::vector<RunNumber> runs;
    RunNumber run = 0;
    std::vector<std::size_t> pinned;
    for (auto sample = grade.part.begin; sample < grade.part.end; ++sample) {
        if (std::abs(flight.time(sample)) > largest) continue;
        const bool isGap =
            sample > grade.part.begin && flight.time(sample) - flight.time(sample - 1) > longestStepSeconds;
        if (isGap) ++run;
        if (sample == grade.worst) pinned.push_back(times.size());
        times.push_back(flight.time(sample));
        values.push_back(drawable(graded.value(sample)));
        runs.push_back(run);
    }
    runs = runsOfKnown(runs, values);
    const auto kept = thinned(times, values, runs, pinned, columns);
    PlotLine line;
    for (const auto place : kept.samples) {
        line.at.push_back(times[place]);
        line.value.push_back(values[place]);
    }
    line.breaks = kept.breaks;
    return line;
}

PlotGrade plotGrade(const GradedFlight& flight, const Tolerance& tolerance, const Grade& grade) {
    PlotGrade drawn;
    drawn.title = grade.title;
    drawn.verdict = verdictWords(grade.verdict);
    drawn.words = grade.words;
    if (grade.worst) drawn.worst = flight.time(*grade.worst);
    const auto values = gradedValues(flight, tolerance);
    for (const auto& value : values) {
        auto line = lineOf(flight, grade, value);
        if (!line.at.empty())
            drawn.values.push_back({value.name, value.unit, std::move(line), {value.least, value.most}});
    }
    const bool isOfTime = values.empty() && grade.part.begin != grade.part.end;
    if (isOfTime) {
        drawn.tookSeconds = grade.judgedSeconds;
        drawn.permittedSeconds = {tolerance.atLeastSeconds, tolerance.atMostSeconds};
    }
    return drawn;
}

} // namespace

std::vector<PlotGrade> plotGrades(const FlightLog& log, const std::vector<Tolerance>& tolerances) {
    const GradedFlight flight(log);
    const auto grades = gradesOf(log, tolerances);
    std::vector<PlotGrade> drawn;
    for (std::size_t place = 0; place < grades.size(); ++place)
        drawn.push_back(plotGrade(flight, tolerances[place], grades[place]));
    return drawn;
}

} // namespace tarnly::track
