#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Net/PeerNetwork.hpp"

namespace tarnly {

class Visit;

/// How many peers a port has room for. A peer is a stranger until it has earned trust.
struct AdmissionLimits {
    std::size_t strangers = 256;
    /// From one network that is not this computer.
    std::size_t strangersANetwork = 16;
    /// Strangers and others.
    std::size_t peers = 1024;
    std::size_t peersANetwork = 64;
    /// How long a stranger may stay one.
    Clock::Duration probation = std::chrono::seconds(30);
};

/// Keeps count of the peers of a port, from the moment they are accepted, so that nobody who merely stays can
/// keep others out: when there are too many, the stranger who has been there longest has to go, and the
/// newcomer is served.
///
/// Owned by whoever listens. Belongs to the network thread.
class Admission {
  public:
    using Limits = AdmissionLimits;

    /// `clock` outlives all that runs on `executor`. `onStrangerGone` may be empty.
    Admission(boost::asio::any_io_executor executor, Clock& clock, const Limits& limits,
              std::function<void()> onStrangerGone = {});

    Admission(const Admission&) = delete;
    Admission& operator=(const Admission&) = delete;
    ~Admission();

    /// Takes in a newcomer, for as long as the visit lives. `sendAway` frees its descriptor at once.
    std::shared_ptr<Visit> admit(const PeerNetwork& from, std::function<void()> sendAway);

    std::size_t peerCount() const;

  private:
    friend class Visit;
    struct State;
    const std::shared_ptr<State> state_;
};

/// One peer's stay. Belongs to the network thread; owned by the peer's connection.
class Visit {
  public:
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    const PeerNetwork& from() const { return from_; }

    /// The peer is a stranger no longer.
    void trust();
    bool isStranger() const { return isStranger_; }

    /// The time for earning trust stands still, and goes on: the peer waits for us.
    void pauseProbation();
    void resumeProbation();

    /// Whether the peer is within the limits; where it is not, all others have earned trust.
    bool hasRoom() const;

    /// From now on the peer is sent away like that.
    void setSendAway(std::function<void()> sendAway) { sendAway_ = std::move(sendAway); }

  private:
    friend class Admission;
    Visit(std::shared_ptr<Admission::State> state, const PeerNetwork& from, std::function<void()> sendAway);

    const std::shared_ptr<Admission::State> state_;
    const PeerNetwork from_;
    std::function<void()> sendAway_;
    bool isStranger_ = true;
    /// Absent while the time stands still; `probationLeft_` counts then.
    std::optional<Clock::TimePoint> probationEnds_;
    Clock::Duration probationLeft_{};
};

} // namespace tarnly
