#include "TarnlyClient/Lesson/Receipt.hpp"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tarnly::client {
namespace {

/// Of a trigger that would have fired by this computer's reckoning, where the companion says that it did not.
constexpr auto unexplained = "the companion did not say that it fired, though it might have";

std::vector<track::Miss> missedBy(const LessonFlight& flight, const track::FlightLog& log,
                                  const track::ScriptFlight& fly) {
    const auto trial = fly(log);
    std::vector<track::Miss> result;
    for (const auto* trigger : flight.waiting()) {
        const auto found = std::ranges::find(trial.missed, trigger->id, &track::Miss::triggerId);
        if (found != trial.missed.end()) {
            result.push_back(*found);
        } else {
            result.push_back({trigger->id, trigger->id, unexplained, std::nullopt});
        }
    }
    return result;
}

} // namespace

Receipt receiptOf(const LessonFlight& flight, const track::ScriptFlight& fly,
                  const std::vector<track::Tolerance>& tolerances, const std::vector<std::string>& files) {
    Receipt receipt;
    track::FlightLog longest;
    for (std::size_t index = 0; index < flight.parts().size(); ++index) {
        const auto& part = flight.parts()[index];
        if (index > 0 && part.isEmpty()) continue;
        auto log = part.log();
        receipt.parts.push_back({track::summaryOf(log), part.fired(), track::gradesOf(log, tolerances),
                                 index < files.size() ? files[index] : std::string()});
        if (index == 0 || log.size() > longest.size()) longest = std::move(log);
    }
    receipt.missed = missedBy(flight, longest, fly);
    return receipt;
}

} // namespace tarnly::client
