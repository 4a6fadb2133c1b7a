#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "TarnlyPlatform/Base/Error.hpp"

/// How much one client may ask for. A request that asks for more is refused as a whole, with one error, and
/// its connection stays. Far above what lessons need: they keep one client's mistake from being everybody's.
namespace tarnly {

/// Clients receive exactly `what()`; the payload names the limit:
/// `limitExceeded("load_script takes at most 100000 triggers")`.
struct ProtocolLimitErrorCases {
    enum class Case { limitExceeded };
    static constexpr std::array<std::string_view, 1> names{"limitExceeded"};
};
using ProtocolLimitError = Error<ProtocolLimitErrorCases>;

namespace ProtocolLimits {

/// The triggers of one script.
constexpr std::size_t triggersAScript = 100'000;

/// The different fixes that one script names, letter case aside: each is looked up.
constexpr std::size_t fixesAScript = 10'000;

/// Bytes of a trigger's id, of the id that it waits for, of its fix, and of its kinds of condition and
/// action.
constexpr std::size_t idSize = 1024;

/// Bytes of the name of a dataref or a command.
constexpr std::size_t nameSize = 1024;

/// The different names that one session has subscribed to.
constexpr std::size_t namesASession = 10'000;

/// The sum of that over all sessions.
constexpr std::size_t namesInAll = 50'000;

} // namespace ProtocolLimits
} // namespace tarnly
