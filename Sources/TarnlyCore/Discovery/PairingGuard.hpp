#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyPlatform/Base/Event.hpp"
#include "TarnlyPlatform/Base/OnOneThread.hpp"
#include "TarnlyPlatform/Base/Task.hpp"
#include "TarnlyPlatform/Net/PeerNetwork.hpp"

namespace tarnly {

/// Makes guessing the password slow.
///
/// A network that has been refused often gets its answers one after the other, whichever of its connections
/// ask, each after a while, whether the password was right or not: a wait would tell otherwise. Only timers
/// wait. Owned by the host, shared by its sessions. Belongs to the network thread.
class PairingGuard {
  public:
    /// So many refusals are answered at once.
    static constexpr std::size_t promptRefusals = 5;
    static constexpr std::chrono::seconds firstDelay{1};
    /// Each delay is twice the one before, up to this.
    static constexpr std::chrono::seconds longestDelay{8};
    /// Of one network.
    static constexpr std::size_t mostWaiting = 16;
    /// After the last refusal.
    static constexpr std::chrono::minutes memory{10};
    /// Of so many the refusals are remembered; beyond that the longest ago are forgotten.
    static constexpr std::size_t mostNetworks = 1024;

    /// An attempt of a network is answered.
    using OnAnswer = std::function<void(const PeerNetwork& network, bool isAccepted)>;

    /// `clock` outlives all that runs on `executor`. `onAnswer` may be empty.
    PairingGuard(const boost::asio::any_io_executor& executor, Clock& clock, OnAnswer onAnswer = {})
        : clock_(clock), onAnswer_(std::move(onAnswer)), changed_(executor) {}

    /// Whether an attempt to pair can wait for its answer; where it cannot, the connection is to be closed.
    bool hasRoom(const PeerNetwork& network);

    /// Whether the answer is due at once.
    bool isPrompt(const PeerNetwork& network);

    /// Returns when an attempt may be answered, or when `isAbandoned`; that is looked at after `wake`. The
    /// guard outlives the waiting.
    Task<> waitForTurn(PeerNetwork network, std::function<bool()> isAbandoned);

    /// An attempt is being answered. A network that knows the password has a clean slate.
    void note(const PeerNetwork& network, bool isAccepted);

    /// An attempt that waits may have been abandoned.
    void wake() { changed_.notifyAll(); }

    std::size_t knownNetworks() const { return lines_.size(); }

  private:
    struct Ticket {
        std::function<bool()> isAbandoned;
    };
    class Place;
    struct Line {
        std::size_t refusals = 0;
        Clock::TimePoint lastRefusalAt{};
        /// In the order of their turns.
        std::vector<std::shared_ptr<Ticket>> waiting;
    };

    /// Null for a network that is not known.
    Line* find(const PeerNetwork& network);
    void forgetOld();
    void forgetLongestAgo();
    static Clock::Duration delayAfter(std::size_t refusals);

    OnOneThread thread_;
    Clock& clock_;
    const OnAnswer onAnswer_;
    Event changed_;
    std::map<PeerNetwork, Line> lines_;
};

} // namespace tarnly
