#include "TarnlyPlatform/Dnssd/ServicePublisher.hpp"

#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>

#include "TarnlyPlatform/Base/Text.hpp"

namespace tarnly {
namespace {

constexpr std::size_t maximumBytes = 63;

/// Our own suffixes have no more: what is longer is part of a name.
constexpr std::size_t maximumDigits = 9;

struct NumberedName {
    std::string_view base;
    unsigned number;
};

std::string cut(std::string name, std::size_t bytes) {
    if (name.size() <= bytes) return name;
    while (bytes > 0 && isContinuation(name[bytes]))
        --bytes;
    name.resize(bytes);
    return name;
}

/// The parts of "base (number)", a number from 2 on.
std::optional<NumberedName> numbered(std::string_view name) {
    constexpr std::string_view opening = " (";
    const auto start = name.rfind(opening);
    if (start == std::string_view::npos || start == 0 || name.back() != ')') return std::nullopt;
    auto digits = name.substr(start + opening.size());
    digits.remove_suffix(1);
    if (digits.empty() || digits.size() > maximumDigits || digits.front() == '0') return std::nullopt;
    unsigned number = 0;
    const auto* end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || rest != end || number < 2) return std::nullopt;
    return NumberedName{name.substr(0, start), number};
}

} // namespace

std::string cutServiceName(std::string name) { return cut(std::move(name), maximumBytes); }

std::string nextServiceName(const std::string& name) {
    const auto [base, number] = numbered(name).value_or(NumberedName{name, 1});
    const auto suffix = " (" + std::to_string(number + 1) + ")";
    return cut(std::string(base), maximumBytes - suffix.size()) + suffix;
}

} // namespace tarnly
