#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace tarnly {

/// Standard base64 (RFC 4648, section 4), padded, without line breaks.
std::string base64(std::span<const std::byte> bytes);

} // namespace tarnly
