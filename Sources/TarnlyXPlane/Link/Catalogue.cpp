#include "TarnlyXPlane/Link/Catalogue.hpp"

#include <utility>

namespace tarnly {

std::optional<std::int64_t> Catalogue::idOf(const std::string& name) const {
    const auto found = ids_.find(name);
    if (found == ids_.end()) return std::nullopt;
    return found->second;
}

void Catalogue::replace(IdsByName ids, Clock::TimePoint now) {
    ids_ = std::move(ids);
    loadedAt_ = now;
}

} // namespace tarnly
