#include "TarnlyXPlane/TrackSampleReading.hpp"

#include <array>
#include <cstdint>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TarnlyXPlane/Datarefs.hpp"

namespace tarnly {
namespace {

constexpr double feetPerMetre = 3.28084;

template <typename T>
struct Source {
    std::string_view dataref;
    std::optional<T> TrackSample::*member;
};

constexpr std::array plainValues{
    Source<double>{datarefs::latitude, &TrackSample::lat},
    Source<double>{datarefs::longitude, &TrackSample::lon},
    Source<double>{datarefs::phi, &TrackSample::bankDeg},
    Source<double>{datarefs::theta, &TrackSample::pitchDeg},
};

constexpr std::array switches{
    Source<bool>{datarefs::gearHandleDown, &TrackSample::gearDown},
    Source<bool>{datarefs::autopilotServosOn, &TrackSample::autopilotOn},
};

constexpr std::array engineArrays{
    Source<std::vector<double>>{datarefs::throttleRatio, &TrackSample::throttleRatio},
    Source<std::vector<double>>{datarefs::mixtureRatio, &TrackSample::mixtureRatio},
    Source<std::vector<double>>{datarefs::propRatio, &TrackSample::propRatio},
};

class CachedDatarefs {
  public:
    CachedDatarefs(const IdsByName& ids, const ValueCache& values) : ids_(ids), values_(values) {}

    std::optional<double> scalar(std::string_view name) const {
        const auto id = idOf(name);
        return id ? values_.scalar(*id) : std::nullopt;
    }

    std::optional<std::vector<double>> array(std::string_view name) const {
        const auto id = idOf(name);
        if (!id) return std::nullopt;
        auto numbers = values_.array(*id);
        const auto number = values_.scalar(*id);
        if (!numbers && number) numbers.emplace(1, *number);
        return numbers;
    }

    bool isInCatalogue(std::string_view name) const { return ids_.contains(std::string(name)); }

  private:
    /// Absent also for what is no number any more.
    std::optional<std::int64_t> idOf(std::string_view name) const {
        const auto found = ids_.find(std::string(name));
        if (found == ids_.end() || !values_.isNumber(found->second)) return std::nullopt;
        return found->second;
    }

    const IdsByName& ids_;
    const ValueCache& values_;
};

std::optional<double> mean(const std::optional<std::vector<double>>& numbers) {
    if (!numbers || numbers->empty()) return std::nullopt;
    return std::accumulate(numbers->begin(), numbers->end(), 0.0) / static_cast<double>(numbers->size());
}

} // namespace

SampleObservation readTrackSample(const IdsByName& datarefIds, const ValueCache& values) {
    const CachedDatarefs cached(datarefIds, values);
    SampleObservation seen;
    auto& sample = seen.sample;
    for (const auto& [dataref, member] : plainValues)
        sample.*member = cached.scalar(dataref);
    for (const auto& [dataref, member] : engineArrays)
        sample.*member = cached.array(dataref);
    for (const auto& [dataref, member] : switches) {
        const auto value = cached.scalar(dataref);
        if (value) sample.*member = *value > 0.5;
    }
    const auto altitude = cached.scalar(datarefs::indicatedAltitude);
    seen.isAltitudeKnown = altitude.has_value();
    sample.altitudeFt = altitude.value_or(0);
    const bool hasFlapRatio = cached.isInCatalogue(datarefs::flapRatio);
    sample.flapRatio = cached.scalar(hasFlapRatio ? datarefs::flapRatio : datarefs::flapRequestRatio);
    sample.gearRatio = mean(cached.array(datarefs::gearDeployRatio));
    const auto metres = cached.scalar(datarefs::aboveGround);
    if (metres) sample.aglFt = *metres * feetPerMetre;
    return seen;
}

} // namespace tarnly
