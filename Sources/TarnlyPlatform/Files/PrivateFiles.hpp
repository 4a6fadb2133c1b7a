#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "TarnlyPlatform/Files/File.hpp"

/// Files that only the person may read: settings, recordings and the like. Blocking; safe from any thread.
namespace tarnly {

/// Creates `folder` and the folders above it where they are missing, for their owner only. What fails here
/// shows when a file is to be created there.
void createPrivateFolders(const std::filesystem::path& folder);

/// The whole of a file, which is made its owner's only if it is not; absent when it cannot be read
/// or has more than 1 MiB.
std::optional<std::string> readPrivateFile(const std::filesystem::path& file);

/// Whether a file has to be on the disk when it is said to be written, for which that may have to wake up.
enum class Lasting { yes, no };

/// Puts `content` in the place of `file`, whole or not at all, if it is lasting even when the computer stops
/// meanwhile. Only the person may read it. A symbolic link at `file` is replaced, not followed; missing
/// folders are made, for their owner only. Throws `std::system_error`, and leaves nothing behind then but
/// folders.
void replaceFile(const std::filesystem::path& file, std::string_view content, Lasting lasting = Lasting::yes);

} // namespace tarnly
