#include "TarnlyXPlane/Link/ValueCache.hpp"

#include <utility>

namespace tarnly {
namespace {

template <typename T>
std::optional<T> find(const std::unordered_map<std::int64_t, T>& values, std::int64_t id) {
    const auto found = values.find(id);
    if (found == values.end()) return std::nullopt;
    return found->second;
}

} // namespace

void ValueCache::apply(DatarefUpdate update) {
    thread_.check();
    for (const auto& [id, value] : update.values)
        latestValues_.insert_or_assign(id, value);
    for (auto& [id, array] : update.arrayValues)
        latestArrayValues_.insert_or_assign(id, std::move(array));
    std::erase_if(notNumbers_, [&](std::int64_t id) {
        return update.values.contains(id) || update.arrayValues.contains(id);
    });
    notNumbers_.insert(update.notNumbers.begin(), update.notNumbers.end());
}

bool ValueCache::isNumber(std::int64_t id) const {
    thread_.check();
    return !notNumbers_.contains(id);
}

std::optional<double> ValueCache::scalar(std::int64_t id) const {
    thread_.check();
    return find(latestValues_, id);
}

std::optional<std::vector<double>> ValueCache::array(std::int64_t id) const {
    thread_.check();
    return find(latestArrayValues_, id);
}

std::optional<double> ValueCache::element(std::int64_t id, std::int64_t index) const {
    thread_.check();
    const auto found = latestArrayValues_.find(id);
    if (found == latestArrayValues_.end()) return std::nullopt;
    const bool isInside = 0 <= index && std::cmp_less(index, found->second.size());
    if (!isInside) return std::nullopt;
    return found->second[static_cast<std::size_t>(index)];
}

} // namespace tarnly
