#pragma once

#include <stdexcept>

namespace tarnly::client {

/// The companion or the network refused; the text is for the person.
class ClientError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The companion is not there, is gone or does not answer: it may be there again later.
class ConnectionLost : public ClientError {
  public:
    using ClientError::ClientError;
};

/// The tool was called in a way that makes no sense; the text is for the person.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// This side closed the session while it waited for an answer, because the person wished it.
class SessionClosed : public std::runtime_error {
  public:
    SessionClosed() : std::runtime_error("the session was closed") {}
};

} // namespace tarnly::client
