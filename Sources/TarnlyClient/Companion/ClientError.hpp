#pragma once

#include <stdexcept>

namespace tarnly::client {

/// The companion or the network refused; the text is for the person.
class ClientError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// For one who does not understand what the companion says.
inline constexpr const char* otherVersionAdvice = "use the tool that came with the companion";

} // namespace tarnly::client
