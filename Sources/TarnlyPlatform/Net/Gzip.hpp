#pragma once

#include <string>
#include <string_view>

namespace tarnly {

/// The text in a gzip file of one member without name and comment (RFC 1952), as the build makes them. Throws
/// `std::runtime_error` for what is none, and for one that is longer than 16 MiB.
std::string gunzipped(std::string_view file);

} // namespace tarnly
