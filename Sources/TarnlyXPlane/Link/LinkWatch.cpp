// How a link watches the other end: the questions that it asks by itself, and what it makes of the answers.

#include <algorithm>
#include <cmath>
#include <utility>

#include "TarnlyPlatform/Net/Http.hpp"
#include "TarnlyXPlane/Link/WebApiLink.hpp"

namespace tarnly {
namespace {

/// About the tenth of a metre; any aircraft in flight moves further in the time of a beat.
constexpr double samePosition = 1e-6;
/// One difference may be an aircraft that has just begun to move.
constexpr int differencesThatCount = 2;
/// Without a message for that long the simulator is asked whether its flight is still there, whatever else
/// comes.
constexpr std::chrono::seconds quietMessages(5);
/// Who wakes later than that has been kept from running, and reads first what has come meanwhile.
constexpr std::chrono::seconds lateWaking(2);
/// Without values for that long, samples need another proof.
constexpr std::chrono::milliseconds freshValues(300);

} // namespace

void WebApiLink::watch(std::function<void()> onChange) {
    thread_.check();
    if (hasEnded_ || !webSocket_) return;
    onChange_ = std::move(onChange);
    webSocket_->ping(); // whether pings are answered here
    tasks_.spawn(keepWatch(shared_from_this()), closeOnFailure());
}

Task<> WebApiLink::keepWatch(std::shared_ptr<WebApiLink> link) {
    while (!link->hasEnded_) {
        link->look();
        const auto now = link->clock_.now();
        auto next = link->liveness_.nextChange(now);
        if (link->isAtMainMenu()) {
            next = std::min(next, std::max(link->nextMenuPoll(), now + Catalogue::emptyStaleAfter));
        }
        const auto pause = next - now;
        co_await link->clock_.sleepFor(pause);
        if (link->clock_.now() - next > lateWaking) {
            link->webSocket_->ping();
            co_await link->clock_.sleepFor(freshValues);
        }
    }
}

void WebApiLink::look() {
    if (hasEnded_ || !webSocket_) return;
    noteSigns();
    const auto now = clock_.now();
    if (liveness_.isToBeReplaced(now)) return close();
    const bool isQuiet = now - std::max(lastMessageAt_, askedAt_) >= quietMessages;
    if (liveness_.isToBeAsked(now) || isQuiet) {
        liveness_.noteAsked(now);
        askedAt_ = now;
        webSocket_->ping();
        tasks_.spawn(ask(shared_from_this()), dropFailure);
    }
    const bool isTimeToLook = now >= nextMenuPoll();
    if (isAtMainMenu() && isTimeToLook && !std::exchange(isLookingForFlight_, true)) {
        menuPolledAt_ = now;
        auto goOn = [weak = weak_from_this()](const std::exception_ptr&) {
            if (const auto link = weak.lock()) link->isLookingForFlight_ = false;
        };
        tasks_.spawn(lookForFlight(shared_from_this()), std::move(goOn));
    }
    const bool silent = liveness_.isSilent(now);
    if (std::exchange(wasSilent_, silent) != silent) tellChange();
}

/// Catalogues that fail are no reason to ask more often.
Clock::TimePoint WebApiLink::nextMenuPoll() const {
    return std::max(datarefs_.loadedAt(), menuPolledAt_) + menuPollInterval;
}

void WebApiLink::noteSigns() {
    const auto signs = webSocket_->signsOfLife();
    if (signs.lastByteAt) liveness_.noteByte(*signs.lastByteAt);
    if (signs.pongs > 0) liveness_.notePong();
}

bool WebApiLink::isSilent() {
    if (!webSocket_ || !onChange_) return false;
    noteSigns();
    return liveness_.isSilent(clock_.now());
}

void WebApiLink::tellChange() {
    const auto tell = onChange_;
    if (tell) tell();
}

Task<> WebApiLink::ask(std::shared_ptr<WebApiLink> link) {
    const auto response = co_await link->rest_.datarefCount();
    link->noteCount(response);
}

void WebApiLink::noteCount(const HttpResponse& response) {
    if (hasEnded_) return;
    // It lets nobody in any more: the next link is told so, and tells people.
    if (response.status == httpStatus::forbidden) return close();
    liveness_.noteResponse(clock_.now());
    const auto count = response.status == httpStatus::ok ? countIn(response.body) : std::nullopt;
    // The flight has gone, and with it what was known of it.
    if (count && *count == 0 && !isAtMainMenu()) return close();
    look();
}

Task<> WebApiLink::lookForFlight(std::shared_ptr<WebApiLink> link) {
    co_await link->refresh(link->datarefs_);
    if (!link->datarefs_.isEmpty()) {
        co_await link->refresh(link->commands_);
    }
    link->isLookingForFlight_ = false;
}

void WebApiLink::proveStandstill() {
    const bool isFresh = clock_.now() - liveness_.lastValues() <= freshValues;
    if (isFresh || hasEnded_ || !webSocket_ || std::exchange(isComparing_, true)) return;
    webSocket_->ping();
    auto goOn = [weak = weak_from_this()](const std::exception_ptr&) {
        if (const auto link = weak.lock()) link->isComparing_ = false;
    };
    tasks_.spawn(compareStandstill(shared_from_this()), std::move(goOn));
}

Task<> WebApiLink::compareStandstill(std::shared_ptr<WebApiLink> link) {
    const auto begin = link->clock_.now();
    const auto before = link->liveness_.lastValues();
    bool isSame = true;
    auto ids = link->positionIds_;
    std::erase_if(ids, [&](std::int64_t id) { return !link->values_.scalar(id); });
    if (ids.empty()) {
        const auto response = co_await link->rest_.datarefCount();
        link->noteCount(response);
    }
    for (const auto id : ids) {
        isSame = co_await holds(link, id);
        if (!isSame) break;
    }
    link->isComparing_ = false;
    // Values that came meanwhile prove themselves.
    if (link->hasEnded_ || link->liveness_.lastValues() != before) co_return;
    if (isSame) {
        link->mismatches_ = 0;
        link->liveness_.noteStandstill(begin, link->clock_.now());
    } else if (++link->mismatches_ >= differencesThatCount) {
        link->close(); // values have stopped: the next link subscribes anew
    }
}

/// Whether the simulator, asked for the dataref's value, does not contradict the last one that came.
Task<bool> WebApiLink::holds(std::shared_ptr<WebApiLink> link, std::int64_t id) {
    const auto response = co_await link->rest_.datarefValue(id);
    if (response.status != httpStatus::ok) {
        const auto count = co_await link->rest_.datarefCount();
        link->noteCount(count);
        co_return true; // a server that does not tell values, unless the flight has gone
    }
    link->liveness_.noteResponse(link->clock_.now());
    const auto present = valueIn(response.body);
    const auto cached = link->values_.scalar(id);
    co_return !present || !cached || std::abs(*present - *cached) <= samePosition;
}

} // namespace tarnly
