#pragma once

#include <string_view>

#include "TarnlyCore/Protocol/Messages.hpp"

namespace tarnly::client {

/// "NAME=VALUE", or "NAME[2]=VALUE" for one element of an array. Throws `UsageError` for anything else, a
/// value that is not a finite number included.
DatarefSetEntry parseAssignment(std::string_view text);

} // namespace tarnly::client
