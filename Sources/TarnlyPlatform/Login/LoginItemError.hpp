#pragma once

#include <stdexcept>
#include <string>

namespace tarnly {

/// A login item that could not be registered or unregistered.
///
/// `what()` is the case name followed by the detail in parentheses and quotes, for example
/// `cannotWrite("/home/pilot/.config/autostart/tarnly.desktop: Permission denied")`.
class LoginItemError : public std::runtime_error {
  public:
    enum class Case {
        /// The entry could not be put in its place.
        cannotWrite,
        /// The entry is there still.
        cannotRemove,
        /// The program's name or arguments have no form in an entry.
        notRepresentable
    };

    LoginItemError(Case which, const std::string& detail);

    Case which() const noexcept { return which_; }

  private:
    Case which_;
};

} // namespace tarnly
