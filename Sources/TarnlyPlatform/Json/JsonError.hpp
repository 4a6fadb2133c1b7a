#pragma once

#include <stdexcept>

namespace tarnly {

/// A text that is not the JSON that was expected, or a value that JSON cannot express.
class JsonError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace tarnly
