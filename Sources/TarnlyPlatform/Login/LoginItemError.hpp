#pragma once

#include "TarnlyPlatform/Base/Error.hpp"

namespace tarnly {

/// A login item that could not be registered or unregistered.
struct LoginItemErrorCases {
    enum class Case {
        /// The entry could not be put in its place.
        cannotWrite,
        /// The entry is there still.
        cannotRemove,
        /// The program's name or arguments have no form in an entry.
        notRepresentable
    };
    static constexpr std::array<std::string_view, 3> names{"cannotWrite", "cannotRemove", "notRepresentable"};
};
using LoginItemError = Error<LoginItemErrorCases>;

} // namespace tarnly
