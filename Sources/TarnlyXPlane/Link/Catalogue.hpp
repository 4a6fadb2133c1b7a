#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "TarnlyPlatform/Base/Clock.hpp"
#include "TarnlyXPlane/Link/SharedAttempt.hpp"
#include "TarnlyXPlane/Link/WebApiMessages.hpp"

namespace tarnly {

/// What the simulator knows by name, of one kind, as it was last told: add-on datarefs come late, and at the
/// main menu there are none. Belongs to its link, on the network thread.
class Catalogue {
  public:
    /// Older than that it is asked again for a name that it does not have.
    static constexpr std::chrono::seconds staleAfter{5};
    /// The same for one that is empty.
    static constexpr std::chrono::milliseconds emptyStaleAfter{250};

    std::optional<std::int64_t> idOf(const std::string& name) const;
    const IdsByName& ids() const { return ids_; }
    bool isEmpty() const { return ids_.empty(); }

    /// Whether another one may know more names.
    bool isStale(Clock::TimePoint now) const {
        return now - loadedAt_ >=
               (isEmpty() ? Clock::Duration(emptyStaleAfter) : Clock::Duration(staleAfter));
    }

    Clock::TimePoint loadedAt() const { return loadedAt_; }

    void replace(IdsByName ids, Clock::TimePoint now);

    /// Null while none is being loaded.
    std::shared_ptr<SharedAttempt> loading;

  private:
    IdsByName ids_;
    Clock::TimePoint loadedAt_{};
};

} // namespace tarnly
