#pragma once

#include <stdexcept>

namespace tarnly {

/// A program was called in a way that makes no sense; the text is for the person.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace tarnly
