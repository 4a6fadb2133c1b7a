#pragma once

#include <optional>
#include <string>

namespace tarnly {

/// Why the file at `path` is no navigation database, and what to do about it, on one line; absent where it is
/// one, or where the trouble may pass, as with a file that somebody writes just now. Blocks for as long as
/// its disk does; callable from any thread.
std::optional<std::string> problemOfNavDatabase(const std::string& path);

} // namespace tarnly
