#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "TarnlySimulator/World/WorldError.hpp"

namespace tarnly::simulator {

/// A request that the interface refuses: the code is for programs, `what()` for people. A value.
class ApiError : public std::runtime_error {
  public:
    ApiError(unsigned status, std::string code, const std::string& message)
        : std::runtime_error(message), status_(status), code_(std::move(code)) {}

    /// What the world refuses, as clients are told of it.
    explicit ApiError(const WorldError& error);

    /// The HTTP status that goes with it.
    unsigned status() const { return status_; }
    const std::string& code() const { return code_; }

  private:
    unsigned status_;
    std::string code_;
};

/// `{"error_code":…,"error_message":…}`
std::string errorBody(const ApiError& error);

} // namespace tarnly::simulator
