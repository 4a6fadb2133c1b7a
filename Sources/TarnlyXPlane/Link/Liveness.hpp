#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <optional>

#include "TarnlyPlatform/Base/Clock.hpp"

namespace tarnly {

/// Whether the other end of a link lives, judged by what it shows: the simulator sends only what changes, so
/// silence alone proves nothing. A plain value; knows no sockets and no clock.
///
/// After `askAfter` without a byte it is to be asked, by a ping and a small request over HTTP. A server that
/// has answered a ping is judged by its bytes; one that never has, by its answers over HTTP as well.
class Liveness {
  public:
    struct Limits {
        Clock::Duration askAfter = std::chrono::seconds(5);
        /// How long the questions may stay unanswered before the link counts as silent.
        Clock::Duration answerWithin = std::chrono::seconds(3);
        /// Since the last sign of life.
        Clock::Duration replaceAfter = std::chrono::seconds(15);
    };

    explicit Liveness(Clock::TimePoint now) : Liveness(now, Limits()) {}
    Liveness(Clock::TimePoint now, Limits limits) : limits_(limits), lastByte_(now) {}

    void noteByte(Clock::TimePoint when) { lastByte_ = std::max(lastByte_, when); }
    void notePong() { answersPings_ = true; }
    /// Any HTTP response.
    void noteResponse(Clock::TimePoint when) { lastResponse_ = std::max(lastResponse_, when); }
    void noteAsked(Clock::TimePoint when) { lastAsked_ = when; }

    bool answersPings() const { return answersPings_; }

    /// When the other end last showed that it lives.
    Clock::TimePoint lastSign() const;

    bool isToBeAsked(Clock::TimePoint now) const { return now >= nextQuestion(); }
    bool isSilent(Clock::TimePoint now) const {
        return now >= lastSign() + limits_.askAfter + limits_.answerWithin;
    }
    bool isToBeReplaced(Clock::TimePoint now) const { return now >= lastSign() + limits_.replaceAfter; }

    /// The next moment at which one of the answers above may change by itself.
    Clock::TimePoint nextChange(Clock::TimePoint now) const;

    // What a sample stands on

    /// Values of the aircraft came.
    void noteValues(Clock::TimePoint when);

    /// The values that were there at `begin` have been found to hold, by an answer that came at `end`.
    void noteStandstill(Clock::TimePoint begin, Clock::TimePoint end);

    Clock::TimePoint lastValues() const { return lastValues_; }

    /// Whether the values at `moment` are known to have been the aircraft's.
    bool isProven(Clock::TimePoint moment) const;

  private:
    struct Span {
        Clock::TimePoint from;
        Clock::TimePoint to;
    };

    Clock::TimePoint nextQuestion() const;
    void addProof(Span span);

    Limits limits_;
    Clock::TimePoint lastByte_;
    Clock::TimePoint lastResponse_{};
    Clock::TimePoint lastValues_{};
    std::optional<Clock::TimePoint> lastAsked_;
    bool answersPings_ = false;
    /// Of the last seconds, in ascending order.
    std::deque<Span> proofs_;
};

} // namespace tarnly
