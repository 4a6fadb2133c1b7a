#include "TarnlyXPlane/Link/ValueCache.hpp"

#include <algorithm>
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
    values_.with([&](Values& latest) {
        for (const auto& [id, value] : update.values)
            latest.latestValues.insert_or_assign(id, value);
        for (auto& [id, array] : update.arrayValues)
            latest.latestArrayValues.insert_or_assign(id, std::move(array));
    });
}

std::optional<double> ValueCache::scalar(std::int64_t id) const {
    return values_.with([id](const Values& latest) { return find(latest.latestValues, id); });
}

std::optional<std::vector<double>> ValueCache::array(std::int64_t id) const {
    return values_.with([id](const Values& latest) { return find(latest.latestArrayValues, id); });
}

std::optional<double> ValueCache::element(std::int64_t id, std::int64_t index) const {
    return values_.with([=](const Values& latest) -> std::optional<double> {
        const auto found = latest.latestArrayValues.find(id);
        if (found == latest.latestArrayValues.end() ||
            !(0 <= index && std::cmp_less(index, found->second.size())))
            return std::nullopt;
        return found->second[static_cast<std::size_t>(index)];
    });
}

bool ValueCache::hasAny(std::span<const std::int64_t> ids) const {
    return values_.with([ids](const Values& latest) {
        return std::ranges::any_of(ids, [&](std::int64_t id) {
            return latest.latestValues.contains(id) || latest.latestArrayValues.contains(id);
        });
    });
}

} // namespace tarnly
