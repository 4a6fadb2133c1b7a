#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"

namespace tarnly {

/// The last values that the simulator sent, by dataref id; nothing is ever removed. Belongs to its link, on
/// the network thread.
///
/// Scalars and arrays are apart: an element of an array never passes for a scalar.
class ValueCache {
  public:
    void apply(DatarefUpdate update);

    /// The last number, also where it has become something else since.
    std::optional<double> scalar(std::int64_t id) const;
    std::optional<std::vector<double>> array(std::int64_t id) const;

    /// Absent also when the array has no such element.
    std::optional<double> element(std::int64_t id, std::int64_t index) const;

    /// Whether what came last was a number, or an array of numbers.
    bool isNumber(std::int64_t id) const;

  private:
    OnOneThread thread_;
    std::unordered_map<std::int64_t, double> latestValues_;
    std::unordered_map<std::int64_t, std::vector<double>> latestArrayValues_;
    std::unordered_set<std::int64_t> notNumbers_;
};

} // namespace tarnly
