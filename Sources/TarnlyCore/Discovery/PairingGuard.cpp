#include "TarnlyCore/Discovery/PairingGuard.hpp"

#include <algorithm>
#include <utility>

#include "TarnlyPlatform/Base/TaskGroup.hpp"

namespace tarnly {

/// Stands in the line of its network for as long as it lives.
class PairingGuard::Place {
  public:
    Place(PairingGuard& guard, Line& line, std::function<bool()> isAbandoned)
        : guard_(guard), line_(line), ticket_(std::make_shared<Ticket>(std::move(isAbandoned))) {
        line_.waiting.push_back(ticket_);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    /// Those behind ask for their turn when this one's answer has been noted.
    ~Place() {
        std::erase(line_.waiting, ticket_);
        guard_.wake();
    }

    bool isFirst() const { return line_.waiting.front() == ticket_; }
    bool isAbandoned() const { return ticket_->isAbandoned(); }

  private:
    PairingGuard& guard_;
    Line& line_;
    const std::shared_ptr<Ticket> ticket_;
};

bool PairingGuard::hasRoom(const PeerNetwork& network) {
    const auto* line = find(network);
    if (line == nullptr) return true;
    const auto waiting =
        std::ranges::count_if(line->waiting, [](const auto& ticket) { return !ticket->isAbandoned(); });
    return static_cast<std::size_t>(waiting) < mostWaiting;
}

bool PairingGuard::isPrompt(const PeerNetwork& network) {
    const auto* line = find(network);
    return line == nullptr || (line->refusals < promptRefusals && line->waiting.empty());
}

Task<> PairingGuard::waitForTurn(PeerNetwork network, std::function<bool()> isAbandoned) {
    thread_.check();
    auto& line = lines_[network]; // stays while somebody waits
    const Place place(*this, line, std::move(isAbandoned));
    while (!place.isFirst() && !place.isAbandoned()) {
        co_await changed_.wait();
    }
    const auto due = clock_.now() + delayAfter(line.refusals);
    while (clock_.now() < due && !place.isAbandoned()) {
        const auto left = due - clock_.now();
        co_await waitFor(changed_, clock_, left);
    }
}

void PairingGuard::note(const PeerNetwork& network, bool isAccepted) {
    thread_.check();
    if (onAnswer_) onAnswer_(network, isAccepted);
    forgetOld();
    if (isAccepted) {
        if (auto* line = find(network)) line->refusals = 0;
        return;
    }
    if (lines_.size() >= mostNetworks && !lines_.contains(network)) forgetLongestAgo();
    auto& line = lines_[network];
    ++line.refusals;
    line.lastRefusalAt = clock_.now();
}

PairingGuard::Line* PairingGuard::find(const PeerNetwork& network) {
    thread_.check();
    const auto found = lines_.find(network);
    if (found == lines_.end()) return nullptr;
    auto& line = found->second;
    if (clock_.now() - line.lastRefusalAt >= memory) line.refusals = 0;
    return &line;
}

void PairingGuard::forgetOld() {
    std::erase_if(lines_, [now = clock_.now()](const auto& known) {
        const auto& line = known.second;
        return line.waiting.empty() && (line.refusals == 0 || now - line.lastRefusalAt >= memory);
    });
}

/// Somebody has very many networks; that must not cost memory. Those where somebody waits are few.
void PairingGuard::forgetLongestAgo() {
    auto longestAgo = lines_.end();
    for (auto known = lines_.begin(); known != lines_.end(); ++known) {
        const bool isOlder =
            longestAgo == lines_.end() || known->second.lastRefusalAt < longestAgo->second.lastRefusalAt;
        if (known->second.waiting.empty() && isOlder) longestAgo = known;
    }
    if (longestAgo != lines_.end()) lines_.erase(longestAgo);
}

Clock::Duration PairingGuard::delayAfter(std::size_t refusals) {
    if (refusals < promptRefusals) return Clock::Duration::zero();
    const auto doublings = std::min<std::size_t>(refusals - promptRefusals, 8);
    return std::min<Clock::Duration>(firstDelay * (1U << doublings), longestDelay);
}

} // namespace tarnly
