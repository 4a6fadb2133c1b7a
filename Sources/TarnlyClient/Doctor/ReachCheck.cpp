#include "TarnlyClient/Doctor/ReachCheck.hpp"

#include <algorithm>
#include <thread>

#include "TarnlyClient/Doctor/Rounds.hpp"
#include "TarnlyCore/Protocol/ReachTest.hpp"

namespace tarnly::client {
namespace {

constexpr auto step = "reach";
constexpr std::chrono::milliseconds betweenLooks{300};
using Outcome = ReachFinding::Outcome;

} // namespace

Finding waitForADevice(const std::filesystem::path& dataFolder, std::chrono::milliseconds wait,
                       std::chrono::milliseconds limitOfAsking,
                       const std::function<void(const CompanionStatus&)>& show) {
    using SteadyClock = std::chrono::steady_clock;
    auto status = askForWholeStatus(dataFolder, limitOfAsking);
    const ReachTest test(status);
    show(status);
    const auto end = SteadyClock::now() + wait;
    auto found = test.look(status);
    while (found.outcome == Outcome::nobodyYet && SteadyClock::now() < end) {
        std::this_thread::sleep_until(std::min(end, SteadyClock::now() + betweenLooks));
        status = askForWholeStatus(dataFolder, limitOfAsking);
        found = test.look(status);
    }
    if (found.outcome == Outcome::nobodyYet) found = ReachTest::neverArrived(status);
    if (found.outcome == Outcome::fine) return Finding::fine(step, found.text.text());
    return Finding::amiss(step, found.text.text(), found.cure.text());
}

} // namespace tarnly::client
