#include "TarnlyCore/ScriptCheck/NearName.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "TarnlyCore/ScriptCheck/ScriptFinding.hpp"

namespace tarnly {
namespace {

/// Bytes: what is longer is not compared, which takes the square of the length.
constexpr std::size_t longest = 64;

/// Without what people easily get wrong: letter case, and how words are joined.
std::string simplified(std::string_view name) {
    std::string result;
    for (const char letter : name) {
        if (letter == '_' || letter == '-' || letter == ' ') continue;
        const bool isUpper = letter >= 'A' && letter <= 'Z';
        result += isUpper ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return result;
}

/// How many letters have to be put in, taken out or replaced to make one text of the other.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        auto diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const auto replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

bool isPart(const std::string& part, const std::string& whole) {
    constexpr std::size_t telling = 4;
    return part.size() >= telling && whole.find(part) != std::string::npos;
}

} // namespace

std::optional<std::string_view> nearName(std::string_view written, std::span<const std::string_view> names) {
    if (written.size() > longest) return std::nullopt;
    const auto plain = simplified(written);
    std::optional<std::string_view> nearest;
    std::size_t least = longest;
    for (const auto name : names) {
        if (name.size() > longest) continue;
        const auto other = simplified(name);
        const bool isContained = isPart(plain, other) || isPart(other, plain);
        const auto differing = isContained ? std::size_t{1} : distance(plain, other);
        const bool isNear = isContained || differing <= std::max(plain.size(), other.size()) / 3;
        if (!isNear || differing >= least) continue;
        nearest = name;
        least = differing;
    }
    return nearest;
}

std::string didYouMean(std::string_view written, std::span<const std::string_view> names,
                       const std::string& otherwise) {
    const auto name = nearName(written, names);
    return name ? "; did you mean " + inQuotes(*name) + "?" : otherwise;
}

} // namespace tarnly
