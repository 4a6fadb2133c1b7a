#pragma once

#include <optional>

namespace tarnly {

/// What the triggers look at in one sample of the flight.
/// All have initializers: what a designated initializer leaves out is absent, without a warning.
struct TriggerSample {
    /// Seconds on the recording's clock.
    double elapsed = 0;
    /// Degrees.
    std::optional<double> lat{};
    std::optional<double> lon{};
    double altFt = 0;
    std::optional<double> aglFt{};
    std::optional<bool> gearDown{};

    bool operator==(const TriggerSample&) const = default;
};

} // namespace tarnly
