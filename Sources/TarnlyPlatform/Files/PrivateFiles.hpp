#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarnly {

/// Creates `folder` and the folders above it where they are missing, for their owner only. What fails here
/// shows when a file is to be created there.
void createPrivateFolders(const std::filesystem::path& folder);

/// The whole of a file, which is made its owner's only if it is not; absent when it cannot be read
/// or has more than 1 MiB.
std::optional<std::string> readPrivateFile(const std::filesystem::path& file);

/// Gives a file of its owner only the content `text`, in place; says whether that was possible. A full disk
/// leaves the former content, and what others could read is not written to.
bool overwritePrivateFile(const std::filesystem::path& file, std::string_view text);

} // namespace tarnly
