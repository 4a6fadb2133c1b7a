#include "TarnlyXPlane/Link/Liveness.hpp"

#include <algorithm>

namespace tarnly {
namespace {

using std::chrono::milliseconds;

/// Updates come ten times a second while anything changes.
constexpr milliseconds valuesProveBefore(200);
constexpr milliseconds valuesProveAfter(300);
/// An answer proves what was asked about, unless it came so late that the simulator may have stood in
/// between.
constexpr milliseconds promptAnswer(1000);
constexpr milliseconds answerProvesBefore(500);
/// How long a proof may still be wanted.
constexpr std::chrono::seconds proofsKept(10);

} // namespace

Clock::TimePoint Liveness::lastSign() const {
    return answersPings_ ? lastByte_ : std::max(lastByte_, lastResponse_);
}

Clock::TimePoint Liveness::nextQuestion() const {
    const auto due = lastSign() + limits_.askAfter;
    const bool isAsked = lastAsked_ && *lastAsked_ >= due;
    return isAsked ? *lastAsked_ + limits_.answerWithin : due;
}

Clock::TimePoint Liveness::nextChange(Clock::TimePoint now) const {
    const auto silent = lastSign() + limits_.askAfter + limits_.answerWithin;
    auto next = lastSign() + limits_.replaceAfter;
    if (silent > now) next = std::min(next, silent);
    const auto question = nextQuestion();
    if (question > now) next = std::min(next, question);
    return next;
}

void Liveness::noteValues(Clock::TimePoint when) {
    lastValues_ = when;
    addProof({when - valuesProveBefore, when + valuesProveAfter});
}

void Liveness::noteStandstill(Clock::TimePoint begin, Clock::TimePoint end) {
    const bool isPrompt = end - begin <= promptAnswer;
    addProof({isPrompt ? begin - valuesProveAfter : end - answerProvesBefore, end});
}

void Liveness::addProof(Span span) {
    if (!proofs_.empty() && span.from <= proofs_.back().to && span.from >= proofs_.back().from) {
        proofs_.back().to = std::max(proofs_.back().to, span.to);
    } else {
        proofs_.push_back(span);
    }
    while (proofs_.front().to < span.to - proofsKept)
        proofs_.pop_front();
}

bool Liveness::isProven(Clock::TimePoint moment) const {
    return std::ranges::any_of(proofs_,
                               [&](const Span& span) { return span.from <= moment && moment <= span.to; });
}

} // namespace tarnly
