#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnly {

/// What to do about `text`, which stops being JSON at byte `at`: `; remove the comma before it`, say. Empty
/// for what is none of the usual slips.
std::string syntaxCure(std::string_view text, std::size_t at);

} // namespace tarnly
