#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace tarnly {

/// `text` in quotes, with quotes, backslashes and control characters escaped: "\n", "\u{1F}".
std::string quoted(std::string_view text);

/// What an operation of the house fails with: one of a few cases, and a text that goes with it.
///
/// `what()` is the textual form that people and clients are shown: the case's name, and behind it what goes
/// with it in parentheses and quotes, `connectionFailed("127.0.0.1:8086: Connection refused")`. The cases are
/// those of `Cases`, in which `names` has the name of each, in their order:
///
///     struct DoorCases {
///         enum class Case { locked, missing };
///         static constexpr std::array<std::string_view, 2> names{"locked", "missing"};
///     };
///     using DoorError = Error<DoorCases>;
///
/// A value. Thrown where the failure is noticed, caught at the edge: a session's reply, a start's status.
template <typename Cases>
class Error : public std::runtime_error {
  public:
    using Case = typename Cases::Case;

    /// A case that says all: `alreadyStarted`.
    explicit Error(Case which) : std::runtime_error(std::string(name(which))), which_(which) {}

    Error(Case which, std::string payload)
        : std::runtime_error(std::string(name(which)) + "(" + tarnly::quoted(payload) + ")"),
          which_(which),
          payload_(std::move(payload)) {}

    /// Several texts, each with its label: `openFailed(path: "nav.db", message: "no such file")`.
    Error(Case which, std::initializer_list<std::pair<std::string_view, std::string_view>> labelled)
        : std::runtime_error(std::string(name(which)) + "(" + joined(labelled) + ")"), which_(which) {}

    Case which() const noexcept { return which_; }
    std::string_view name() const { return name(which_); }
    /// What goes with the case, as it was given; empty for a case that says all, and for several texts.
    const std::string& payload() const noexcept { return payload_; }

    bool operator==(const Error& other) const {
        return which_ == other.which_ && std::string_view(what()) == other.what();
    }

  private:
    static std::string_view name(Case which) { return Cases::names.at(static_cast<std::size_t>(which)); }

    static std::string joined(std::initializer_list<std::pair<std::string_view, std::string_view>> labelled) {
        std::string text;
        for (const auto& [label, value] : labelled) {
            if (!text.empty()) text += ", ";
            text.append(label).append(": ").append(tarnly::quoted(value));
        }
        return text;
    }

    Case which_;
    std::string payload_;
};

} // namespace tarnly
