#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TarnlyTrack/Grade/Tolerance.hpp"
#include "TarnlyTrack/Log/FlightLog.hpp"

/// How well a recorded flight was flown. Plain values and functions of them, callable from any thread.
namespace tarnly::track {

struct Grade {
    enum class Verdict : std::uint8_t {
        met,
        notMet,
        /// The flight does not tell: the part of it never came, or its values are not known.
        notJudged
    };

    std::string id{};
    std::string title{};
    Verdict verdict = Verdict::notJudged;
    /// What was found, in one clause without a full stop that a terminal may be given: "farthest 60 ft above
    /// 1500 ft, at 3:04".
    std::string words{};
    /// The worst moment; absent where there is none.
    std::optional<std::size_t> worst{};
    /// The part that counts; empty where it never came.
    Stretch part{};
    /// How much was flown of it with values that are known, and outside of what is permitted.
    double judgedSeconds = 0;
    double outsideSeconds = 0;
};

/// "met", "not met" or "not judged".
std::string_view verdictWords(Grade::Verdict verdict);

/// One for each tolerance, in their order, which `readTolerances` has found usable. What a recording does not
/// tell is never held against the pilot: neither gaps nor values that are not known count, and no time in
/// which the flight was frozen. What is at a limit is permitted.
std::vector<Grade> gradesOf(const FlightLog& log, const std::vector<Tolerance>& tolerances);

} // namespace tarnly::track
