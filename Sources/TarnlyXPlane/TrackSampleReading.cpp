#include "TarnlyXPlane/TrackSampleReading.hpp"

#include <array>
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
    Source<double>{datarefs::flapRatio, &TrackSample::flapRatio},
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
        const auto found = ids_.find(std::string(name));
        return found == ids_.end() ? std::nullopt : values_.scalar(found->second);
    }

    std::optional<std::vector<double>> array(std::string_view name) const {
        const auto found = ids_.find(std::string(name));
        return found == ids_.end() ? std::nullopt : values_.array(found->second);
    }

  private:
    const IdsByName& ids_;
    const ValueCache& values_;
};

std::optional<double> mean(const std::optional<std::vector<double>>& numbers) {
    if (!numbers || numbers->empty()) return std::nullopt;
    return std::accumulate(numbers->begin(), numbers->end(), 0.0) / static_cast<double>(numbers->size());
}

} // namespace

TrackSample readTrackSample(const IdsByName& datarefIds, const ValueCache& values) {
    const CachedDatarefs cached(datarefIds, values);
    TrackSample sample;
    for (const auto& [dataref, member] : plainValues)
        sample.*member = cached.scalar(dataref);
    for (const auto& [dataref, member] : engineArrays)
        sample.*member = cached.array(dataref);
    for (const auto& [dataref, member] : switches) {
        const auto value = cached.scalar(dataref);
        if (value) sample.*member = *value > 0.5;
    }
    sample.altitudeFt = cached.scalar(datarefs::indicatedAltitude).value_or(0);
    sample.gearRatio = mean(cached.array(datarefs::gearDeployRatio));
    const auto metres = cached.scalar(datarefs::aboveGround);
    if (metres) sample.aglFt = *metres * feetPerMetre;
    return sample;
}

} // namespace tarnly
