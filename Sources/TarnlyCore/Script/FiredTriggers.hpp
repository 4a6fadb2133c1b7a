#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "TarnlyCore/Script/ArmedScript.hpp"
#include "TarnlyCore/Script/Trigger.hpp"

namespace tarnly {

/// The triggers that fired on one sample, in the order of firing.
///
/// A value that never changes once it is made. However many they are, a copy costs next to nothing: the texts
/// stand in the script, which all copies share. Safe from any thread.
class FiredTriggers {
  public:
    /// None.
    FiredTriggers() = default;

    /// `indices` are places in `script`.
    FiredTriggers(std::shared_ptr<const ArmedScript> script, std::vector<TriggerIndex> indices,
                  const TriggerSample& sample)
        : script_(std::move(script)),
          indices_(std::make_shared<const std::vector<TriggerIndex>>(std::move(indices))),
          elapsed_(sample.elapsed),
          lat_(sample.lat),
          lon_(sample.lon) {}

    std::size_t size() const { return indices_ ? indices_->size() : 0; }
    bool empty() const { return size() == 0; }

    /// Of the sample, in seconds on the recording's clock.
    double elapsed() const { return elapsed_; }

    const ArmedTrigger& trigger(std::size_t place) const { return script_->triggers()[(*indices_)[place]]; }

    /// Copies, with all that is known of each.
    std::vector<FiredTrigger> described() const {
        std::vector<FiredTrigger> result;
        result.reserve(size());
        for (std::size_t place = 0; place < size(); ++place) {
            const auto& fired = trigger(place);
            result.push_back({fired.id, fired.title(), fired.actionKind, fired.action, elapsed_, lat_, lon_});
        }
        return result;
    }

  private:
    std::shared_ptr<const ArmedScript> script_;
    std::shared_ptr<const std::vector<TriggerIndex>> indices_;
    double elapsed_ = 0;
    std::optional<double> lat_;
    std::optional<double> lon_;
};

} // namespace tarnly
