#pragma once

#include <cstddef>
#include <string_view>

namespace tarnly {

/// Where something stands in a text, as editors count: from 1, columns in characters of UTF-8.
struct TextPlace {
    std::size_t line = 1;
    std::size_t column = 1;

    bool operator==(const TextPlace&) const = default;
};

/// The places of one byte after the other in one text, which it walks through once. Plain; `text` outlives
/// it.
class TextPlaces {
  public:
    explicit TextPlaces(std::string_view text) : text_(text) {}

    /// Of the byte at `offset`, which is no smaller than the one asked for before; beyond the end of the text
    /// counts as its end.
    TextPlace at(std::size_t offset);

  private:
    const std::string_view text_;
    std::size_t walked_ = 0;
    TextPlace place_;
};

} // namespace tarnly
