#pragma once

#include <array>
#include <string_view>

#include "TarnlyPlatform/Base/Error.hpp"

namespace tarnly::simulator {

/// Why the world does not do what it is asked to. The names are the codes that the simulator has for them,
/// the text with each is a sentence for people.
struct WorldErrorCases {
    enum class Case { invalidDatarefId, datarefIsReadOnly, invalidCommandId, invalidValue, invalidIndex };
    static constexpr std::array<std::string_view, 5> names{
        "invalid_dataref_id", "dataref_is_readonly", "invalid_command_id", "invalid_value", "invalid_index"};
};
using WorldError = Error<WorldErrorCases>;

} // namespace tarnly::simulator
