#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "TarnlySimulator/World/World.hpp"

namespace tarnly::simulator {

/// What one client has subscribed to, and what it has been told already.
class Subscriptions {
  public:
    /// Subscribing again makes the next update tell the value again.
    void add(std::int64_t datarefId) { told_[datarefId] = {}; }
    void remove(std::int64_t datarefId) { told_.erase(datarefId); }
    void removeAll() { told_.clear(); }

    /// The values subscribed so far will never be told again.
    void freeze();

    std::size_t size() const { return told_.size(); }

    /// The update message with the values that have changed since the last one; empty when none has.
    std::string update(const World& world);

  private:
    struct Told {
        /// The value as it was printed last; empty before the first time.
        std::string text;
        bool isFrozen = false;
    };

    std::map<std::int64_t, Told> told_;
};

} // namespace tarnly::simulator
