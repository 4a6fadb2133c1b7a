#pragma once

#include <array>
#include <string_view>

#include "TarnlyPlatform/Base/Error.hpp"

namespace tarnly {

/// What an operation on the simulator fails with, besides failures of the network. In parentheses what goes
/// with the case.
struct XPlaneBackendErrorCases {
    enum class Case {
        unknownDataref,                   ///< absent from the catalogue (the dataref)
        unknownCommand,                   ///< absent from the catalogue (the command)
        commandFailed,                    ///< refused by the simulator (the command)
        timeout,                          ///< no value came in time (the dataref, and what to do)
        flightNotFound,                   ///< no such file (its path)
        notImplemented,                   ///< for a backend that lacks an operation (the operation)
        situationsDirectoryNotConfigured, ///< (nothing)
    };
    static constexpr std::array<std::string_view, 7> names{"unknownDataref",
                                                           "unknownCommand",
                                                           "commandFailed",
                                                           "timeout",
                                                           "flightNotFound",
                                                           "notImplemented",
                                                           "situationsDirectoryNotConfigured"};
};
using XPlaneBackendError = Error<XPlaneBackendErrorCases>;

} // namespace tarnly
