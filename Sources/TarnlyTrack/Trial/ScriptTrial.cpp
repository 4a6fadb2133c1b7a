#include "TarnlyTrack/Trial/ScriptTrial.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "TarnlyTrack/Trial/NearMiss.hpp"

namespace tarnly::track {
namespace {

/// Nautical miles an hour; nothing that flies in air is faster.
constexpr double fastest = 2500;
constexpr double secondsAnHour = 3600;

/// Over which link each sample came, as far as positions tell.
class Links {
  public:
    explicit Links(const FlightLog& log) : log_(log) {}

    /// Asked for one sample after the other.
    std::int64_t of(std::size_t sample) {
        if (const auto here = log_.position(sample)) {
            if (hasLast_ && !isWithinReach(*here, log_.elapsedSeconds(sample))) ++link_;
            hasLast_ = true;
            last_ = *here;
            lastAt_ = log_.elapsedSeconds(sample);
        }
        return link_;
    }

  private:
    bool isWithinReach(const Position& here, double elapsed) const {
        const auto step = elapsed - lastAt_;
        if (step < 0) return false; // two logs, one behind the other
        if (step <= longestStepSeconds) return true;
        const auto distance = TriggerEngine::distanceNm(last_.lat, last_.lon, here.lat, here.lon);
        return distance <= fastest * step / secondsAnHour;
    }

    const FlightLog& log_;
    std::int64_t link_ = 0;
    bool hasLast_ = false;
    Position last_;
    double lastAt_ = 0;
};

/// What the engine looks at.
TriggerSample triggerSample(const FlightLog& log, std::size_t sample, std::int64_t link) {
    return {.elapsed = log.elapsedSeconds(sample),
            .lat = log.value(Quantity::lat, sample),
            .lon = log.value(Quantity::lon, sample),
            .altFt = log.value(Quantity::altitudeFt, sample),
            .aglFt = log.value(Quantity::aglFt, sample),
            .gearDown = log.value(Switch::gearDown, sample),
            .link = link};
}

} // namespace

Trial tryScript(TriggerEngine engine, const FlightLog& log, const FixResolver& fixPosition) {
    Trial trial;
    std::vector<std::int64_t> links;
    links.reserve(log.size());
    Links link(log);
    for (std::size_t sample = 0; sample < log.size(); ++sample) {
        links.push_back(link.of(sample));
        auto fired = engine.evaluate(triggerSample(log, sample, links.back()));
        if (fired.empty()) continue;
        std::ranges::move(fired.described(), std::back_inserter(trial.fired));
        trial.firedOn.resize(trial.fired.size(), sample);
    }
    const NearMisses misses(log, links, trial.fired, fixPosition);
    for (const auto& trigger : engine.waiting())
        trial.missed.push_back(misses.of(trigger));
    return trial;
}

} // namespace tarnly::track
