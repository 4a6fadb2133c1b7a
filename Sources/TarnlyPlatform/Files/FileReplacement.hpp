#pragma once

#include <filesystem>
#include <string_view>

namespace tarnly {

/// Puts `content` in the place of `file`, whole or not at all, even if the computer stops meanwhile. Only the
/// person may read it (mode 0600). A symbolic link at `file` is replaced, not followed; missing folders are
/// made, with mode 0700. Throws `std::system_error`, and leaves nothing behind then but folders.
void replaceFile(const std::filesystem::path& file, std::string_view content);

} // namespace tarnly
