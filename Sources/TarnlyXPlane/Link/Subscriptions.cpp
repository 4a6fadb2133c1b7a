#include "TarnlyXPlane/Link/Subscriptions.hpp"

#include <utility>

namespace tarnly {
namespace {

/// A server that answers no subscriptions must not make us remember all of them.
constexpr std::size_t mostUnanswered = 1000;

} // namespace

std::vector<Subscriptions::Ids> Subscriptions::messagesFor(std::span<const std::int64_t> ids,
                                                           Clock::TimePoint now) {
    std::vector<Ids> messages;
    for (const auto id : ids) {
        const auto [asked, isNew] = askedAt_.try_emplace(id, now);
        if (!isNew && now - asked->second < patience) continue;
        asked->second = now;
        if (messages.empty() || messages.back().size() == largestMessage) messages.emplace_back();
        messages.back().push_back(id);
    }
    return messages;
}

void Subscriptions::noteSent(std::int64_t reqId, Ids ids) {
    unanswered_.insert_or_assign(reqId, std::move(ids));
    if (unanswered_.size() > mostUnanswered) unanswered_.erase(unanswered_.begin());
}

bool Subscriptions::asksForOne(std::int64_t reqId) const {
    const auto request = unanswered_.find(reqId);
    return request != unanswered_.end() && request->second.size() == 1;
}

Subscriptions::Ids Subscriptions::noteResult(std::int64_t reqId, bool isSuccess) {
    auto request = unanswered_.extract(reqId);
    if (request.empty() || isSuccess || request.mapped().size() < 2) return {};
    return std::move(request.mapped());
}

} // namespace tarnly
