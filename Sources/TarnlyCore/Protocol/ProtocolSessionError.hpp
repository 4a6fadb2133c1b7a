#pragma once

#include <stdexcept>
#include <string>

namespace tarnly {

/// A session's own failure. Clients receive exactly `what()`: `missingParams("load_flight requires a path")`.
class ProtocolSessionError : public std::runtime_error {
  public:
    static ProtocolSessionError missingParams(const std::string& message);

  private:
    using std::runtime_error::runtime_error;
};

} // namespace tarnly
