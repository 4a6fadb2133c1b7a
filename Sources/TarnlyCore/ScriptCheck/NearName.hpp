#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnly {

/// The one of `names` that was probably meant by `written`: which differs in few letters, in letter case or
/// in the way of joining words, or of which it is a part. Absent where none is near.
std::optional<std::string_view> nearName(std::string_view written, std::span<const std::string_view> names);

/// `; did you mean "feet"?`, or `otherwise` where no name is near.
std::string didYouMean(std::string_view written, std::span<const std::string_view> names,
                       const std::string& otherwise);

} // namespace tarnly
