#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "TarnlyCore/Script/Trigger.hpp"

namespace tarnly::test {

/// Draws scripts and samples that meet all the odd cases: few ids, fixes and thresholds, so that they are
/// shared, form chains and cycles and are met exactly; absent values, NaN and infinity; a clock that jumps
/// back; links that are replaced.
class RandomFlight {
  public:
    explicit RandomFlight(std::uint64_t seed) : engine_(seed) {}

    /// Each trigger has a name of its own. The ids are drawn from as many as there are triggers.
    std::vector<ArmedTrigger> script(std::size_t size);

    /// One trigger of each id in random order, nearly all of them waiting for another down to the one that
    /// starts.
    std::vector<ArmedTrigger> chains(std::size_t size);

    /// The next sample of a flight.
    TriggerSample sample();

    /// Evenly distributed between the two.
    double between(double least, double most) { return std::uniform_real_distribution(least, most)(engine_); }

    /// Whether one of `n` equally probable events occurs.
    bool oneIn(std::size_t n) { return below(n) == 0; }

    /// 0 to `end` - 1.
    std::size_t below(std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(engine_);
    }

  private:
    template <typename T>
    T oneOf(std::initializer_list<T> values) {
        return values.begin()[below(values.size())];
    }

    template <typename T>
    std::optional<T> mostly(T value) {
        return oneIn(12) ? std::nullopt : std::optional<T>(std::move(value));
    }

    TriggerCondition condition(std::size_t ids);
    std::string id(std::size_t ids);
    double seconds();
    double feet();
    double degrees();

    std::mt19937_64 engine_;
    double clock_ = 0;
    std::int64_t link_ = 0;
};

} // namespace tarnly::test
