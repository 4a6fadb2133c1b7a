#include "TarnlyTrack/Commands/PlotTrial.hpp"

#include <utility>

namespace tarnly::track {

std::vector<std::size_t> markedOf(const Trial& trial) {
    auto marked = trial.firedOn;
    for (const auto& miss : trial.missed) {
        if (miss.sample) marked.push_back(*miss.sample);
    }
    return marked;
}

PlotTrial plotTrial(const Trial& trial, const FlightLog& log, std::size_t count, std::string script) {
    PlotTrial drawn{std::move(script), {}, {}};
    for (std::size_t place = 0; place < trial.fired.size(); ++place) {
        const auto sample = trial.firedOn[place];
        const auto& fired = trial.fired[place];
        if (sample >= count) {
            drawn.missed.push_back(
                {fired.triggerId, "it fires in the second recording of the file, which is not drawn", {}});
            continue;
        }
        drawn.fired.push_back({fired.triggerId, fired.actionKind, log.elapsedSeconds(sample)});
    }
    for (const auto& [id, title, words, sample] : trial.missed) {
        const auto isDrawn = sample && *sample < count;
        drawn.missed.push_back(
            {id, words, isDrawn ? std::optional(log.elapsedSeconds(*sample)) : std::nullopt});
    }
    return drawn;
}

} // namespace tarnly::track
