#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "TarnlySimulator/Flight/Mixing.hpp"

namespace tarnly::simulator {

/// Entries with a `name` and an `id`, found by either.
template <typename Entry>
class Catalogue {
  public:
    explicit Catalogue(std::vector<Entry> entries) : entries_(std::move(entries)) {
        byName_.reserve(entries_.size());
        for (std::size_t position = 0; position < entries_.size(); ++position)
            byName_.try_emplace(entries_[position].name, position);
    }

    // The names are looked up where the entries keep them.
    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;

    const std::vector<Entry>& entries() const { return entries_; }

    /// Null for a name or an id that nothing has.
    Entry* named(std::string_view name) { return at(byName_, name); }
    const Entry* named(std::string_view name) const { return at(byName_, name); }
    Entry* withId(std::int64_t id) { return at(byId_, id); }
    const Entry* withId(std::int64_t id) const { return at(byId_, id); }

    /// Gives every entry a new positive id of up to 63 bits.
    void drawIds(std::uint64_t seed) {
        byId_.clear();
        byId_.reserve(entries_.size());
        std::uint64_t draw = mix(seed);
        for (std::size_t position = 0; position < entries_.size(); ++position) {
            auto& id = entries_[position].id;
            do {
                id = static_cast<std::int64_t>(mix(draw++) >> 1);
            } while (id == 0 || !byId_.try_emplace(id, position).second);
        }
    }

    /// Gives each of two named entries the other's id; both must exist.
    void swapIds(std::string_view one, std::string_view other) {
        auto& first = byName_.at(one);
        auto& second = byName_.at(other);
        std::swap(entries_[first].id, entries_[second].id);
        byId_[entries_[first].id] = first;
        byId_[entries_[second].id] = second;
    }

  private:
    template <typename Key>
    const Entry* at(const std::unordered_map<Key, std::size_t>& index, Key key) const {
        const auto found = index.find(key);
        return found == index.end() ? nullptr : &entries_[found->second];
    }

    template <typename Key>
    Entry* at(const std::unordered_map<Key, std::size_t>& index, Key key) {
        return const_cast<Entry*>(std::as_const(*this).at(index, key));
    }

    std::vector<Entry> entries_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    std::unordered_map<std::int64_t, std::size_t> byId_;
};

} // namespace tarnly::simulator
